#ifndef KIV_EXPORT_H
#define KIV_EXPORT_H

/**
 * How the two functions that a Kiv library exports are declared.
 *
 * A library that implements the API defines KIV_BUILDING_LIBRARY while it is
 * compiled; clients define nothing.
 */

#if defined(_WIN32)
#if defined(KIV_BUILDING_LIBRARY)
#define KIV_API __declspec(dllexport)
#else
#define KIV_API
#endif
#elif defined(KIV_BUILDING_LIBRARY)
#define KIV_API __attribute__((visibility("default")))
#else
#define KIV_API
#endif

#ifdef __cplusplus
#define KIV_EXTERN_C_BEGIN extern "C" {
#define KIV_EXTERN_C_END }
#else
#define KIV_EXTERN_C_BEGIN
#define KIV_EXTERN_C_END
#endif

#endif
