// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_ATTENDED_H_
#define FOUNDATION_KERNEL_ATTENDED_H_

#include "vxfoundation/export.h"

/// Whether a host has installed an attention handler. None can be installed while an operation
/// runs, so an operation that finds none needs to poll no more.
VXFOUNDATION_EXPORT bool vx_isAttended() noexcept;

#endif  // FOUNDATION_KERNEL_ATTENDED_H_
