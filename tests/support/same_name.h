// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_SAME_NAME_H_
#define TESTS_SUPPORT_SAME_NAME_H_

#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// An object of a class that is registered under the name of quite another class, which is what
/// happens when two sources of a host each have a `Twin` in an unnamed namespace.
vxPtrHandle<vxRepBase> otherTwin();
vxPersistent* persistentOf(const vxPtrHandle<vxRepBase>& twin);

#endif  // TESTS_SUPPORT_SAME_NAME_H_
