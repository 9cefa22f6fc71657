// SPDX-License-Identifier: MIT
#ifndef VXCLSS_EXPORT_H_
#define VXCLSS_EXPORT_H_

#if defined(_WIN32)
#if defined(VXCLSS_BUILD)
#define VXCLSS_EXPORT __declspec(dllexport)
#else
#define VXCLSS_EXPORT __declspec(dllimport)
#endif
#else
#define VXCLSS_EXPORT __attribute__((visibility("default")))
#endif

#endif  // VXCLSS_EXPORT_H_
