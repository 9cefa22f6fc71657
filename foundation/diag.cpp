// SPDX-License-Identifier: MIT
#include "vxfoundation/diag.h"

vxDiagObject::~vxDiagObject() = default;

vxDiagObject* vxDiagObject::getRecordingDestination(vxDiagObject* given, unsigned long&) {
  return given;
}
