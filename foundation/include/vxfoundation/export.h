// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_EXPORT_H_
#define VXFOUNDATION_EXPORT_H_

#if defined(_WIN32)
#if defined(VXFOUNDATION_BUILD)
#define VXFOUNDATION_EXPORT __declspec(dllexport)
#else
#define VXFOUNDATION_EXPORT __declspec(dllimport)
#endif
#else
#define VXFOUNDATION_EXPORT __attribute__((visibility("default")))
#endif

#endif  // VXFOUNDATION_EXPORT_H_
