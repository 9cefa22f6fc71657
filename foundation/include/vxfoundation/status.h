// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_STATUS_H_
#define VXFOUNDATION_STATUS_H_

#include "vxfoundation/export.h"

// A status is a 32-bit word held in a long; only its low 32 bits count. Bit 31 set means failure,
// bits 5 to 30 are the module that reports it, bits 0 to 4 its code: 0x80000B61 is module 91,
// code 1.

/// Does nothing for a success; throws the exception that belongs to a failure.
///
/// The converter of the status's module is asked first; a failure that it does not claim becomes
/// vxStatusException. A stop request of vfCheckAttention() becomes vxStopRequested.
VXFOUNDATION_EXPORT void vfThrowExceptionOnFailure(long status);

/// Registers the function that turns a module's failures into exceptions: it throws the matching
/// one, or returns if it does not know the status, of which only the low 32 bits count. A later
/// registration for a module replaces the earlier one, null removes it. Safe while other threads
/// throw.
VXFOUNDATION_EXPORT void vfRegisterExceptionConverter(long module, void (*converter)(long status));

#endif  // VXFOUNDATION_STATUS_H_
