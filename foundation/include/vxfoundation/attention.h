// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_ATTENTION_H_
#define VXFOUNDATION_ATTENTION_H_

#include "vxfoundation/export.h"

/// A host's answer to "shall this operation stop?"; true stops it.
using vxAttentionHandler = bool (*)(void* context);

/// Installs the process-wide handler that long operations poll; null removes it.
///
/// Call it while no operation runs. The handler itself is called from every thread that runs one,
/// often and in its inner loops, so it should do no more than read an atomic flag, which other
/// threads may raise at any time. What it throws passes through the operation unchanged.
VXFOUNDATION_EXPORT void vfSetAttentionHandler(vxAttentionHandler handler, void* context);

/// 0, or a failure status when the handler asks to stop; vfThrowExceptionOnFailure() turns that
/// into vxStopRequested. Without a handler it costs one relaxed load.
VXFOUNDATION_EXPORT long vfCheckAttention();

#endif  // VXFOUNDATION_ATTENTION_H_
