// SPDX-License-Identifier: MIT
#include "vxfoundation/handle.h"

#include "vxfoundation/exception.h"

void vfThrowBadPointer() { throw vxBadPointer(); }

vxRepBase::~vxRepBase() = default;
