// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_DIAG_H_
#define VXFOUNDATION_DIAG_H_

#include "vxfoundation/export.h"

/// Receives what training and running record about themselves.
///
/// A host derives from it and passes an object, with a word of flags, to those operations; a
/// technique that records finds it in its hooks.
class VXFOUNDATION_EXPORT vxDiagObject {
 public:
  vxDiagObject() = default;
  vxDiagObject(const vxDiagObject&) = default;
  vxDiagObject& operator=(const vxDiagObject&) = default;
  virtual ~vxDiagObject();

  /// The object into which recording goes: `given`, null meaning that nothing is recorded.
  /// `flags` may be changed for the hooks; today it is left alone.
  static vxDiagObject* getRecordingDestination(vxDiagObject* given, unsigned long& flags);
};

#endif  // VXFOUNDATION_DIAG_H_
