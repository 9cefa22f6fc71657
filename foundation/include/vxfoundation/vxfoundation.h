// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_VXFOUNDATION_H_
#define VXFOUNDATION_VXFOUNDATION_H_

#include "vxfoundation/archive.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/diag.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/matrix.h"
#include "vxfoundation/pair.h"
#include "vxfoundation/persistent.h"
#include "vxfoundation/random.h"
#include "vxfoundation/range.h"
#include "vxfoundation/status.h"
#include "vxfoundation/text.h"

#endif  // VXFOUNDATION_VXFOUNDATION_H_
