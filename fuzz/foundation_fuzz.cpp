// SPDX-License-Identifier: MIT
#include "fuzz/families.h"

VX_FUZZ_FAMILY(foundation, fuzz::Foundation)
