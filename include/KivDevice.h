#ifndef KIV_DEVICE_H
#define KIV_DEVICE_H

/**
 * Devices: the hardware that a backend runs on, and its description.
 */

#include "KivCommon.h"

KIV_EXTERN_C_BEGIN

/** What a backend adds to a core's description; opaque. */
typedef struct KivDevice_CoreInfoExtension* KivDevice_CoreInfoExtension_t;

/** What a backend adds to a device's description; opaque. */
typedef struct KivDevice_DeviceInfoExtension* KivDevice_DeviceInfoExtension_t;

/** A backend's own table of device functions; opaque. */
typedef struct KivDevice_InfrastructureTable* KivDevice_Infrastructure_t;

typedef enum {
  KIV_DEVICE_CORE_INFO_VERSION_1 = 1,
  KIV_DEVICE_CORE_INFO_VERSION_UNDEFINED = 0x7FFFFFFF
} KivDevice_CoreInfoVersion_t;

typedef struct {
  uint32_t coreId;
  uint32_t coreType;
  KivDevice_CoreInfoExtension_t coreInfoExtension;
} KivDevice_CoreInfoV1_t;

typedef struct {
  KivDevice_CoreInfoVersion_t version;
  union {
    KivDevice_CoreInfoV1_t v1;
  };
} KivDevice_CoreInfo_t;

typedef enum {
  KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1 = 1,
  KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_UNDEFINED = 0x7FFFFFFF
} KivDevice_HardwareDeviceInfoVersion_t;

typedef struct {
  uint32_t deviceId;
  uint32_t deviceType;
  uint32_t numCores;
  /** numCores records; may be null */
  KivDevice_CoreInfo_t* cores;
  KivDevice_DeviceInfoExtension_t deviceInfoExtension;
} KivDevice_HardwareDeviceInfoV1_t;

typedef struct {
  KivDevice_HardwareDeviceInfoVersion_t version;
  union {
    KivDevice_HardwareDeviceInfoV1_t v1;
  };
} KivDevice_HardwareDeviceInfo_t;

typedef enum {
  KIV_DEVICE_PLATFORM_INFO_VERSION_1 = 1,
  KIV_DEVICE_PLATFORM_INFO_VERSION_UNDEFINED = 0x7FFFFFFF
} KivDevice_PlatformInfoVersion_t;

typedef struct {
  uint32_t numHwDevices;
  /** numHwDevices records; may be null */
  KivDevice_HardwareDeviceInfo_t* hwDevices;
} KivDevice_PlatformInfoV1_t;

typedef struct {
  KivDevice_PlatformInfoVersion_t version;
  union {
    KivDevice_PlatformInfoV1_t v1;
  };
} KivDevice_PlatformInfo_t;

typedef enum {
  KIV_DEVICE_CONFIG_OPTION_CUSTOM = 0,
  KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO = 1,
  KIV_DEVICE_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivDevice_ConfigOption_t;

/** A record of the backend's own making. */
typedef void* KivDevice_CustomConfig_t;

typedef struct {
  KivDevice_ConfigOption_t option;
  union {
    KivDevice_CustomConfig_t customConfig;
    /** may be null */
    KivDevice_PlatformInfo_t* hardwareInfo;
  };
} KivDevice_Config_t;

/**
 * Describes the platform.
 *
 * @param logger the logger's handle, or null.
 * @param platformInfo receives a record that the library owns until
 *        deviceFreePlatformInfo; a recorder leaves it untouched.
 * @return 0; KIV_DEVICE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivDevice_GetPlatformInfoFn_t)(
    Kiv_LogHandle_t logger, const KivDevice_PlatformInfo_t** platformInfo);

/** Gives back what deviceGetPlatformInfo handed out. */
typedef Kiv_ErrorHandle_t (*KivDevice_FreePlatformInfoFn_t)(
    Kiv_LogHandle_t logger, const KivDevice_PlatformInfo_t* platformInfo);

/**
 * Hands out the backend's own device functions.
 *
 * @param infrastructure receives a table that the library owns; a recorder
 *        leaves it untouched.
 * @return 0; KIV_DEVICE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivDevice_GetInfrastructureFn_t)(
    KivDevice_Infrastructure_t* infrastructure);

/**
 * Opens a device.
 *
 * @param logger the logger's handle, or null.
 * @param config config list, or null.
 * @param device receives the handle; given back with deviceFree.
 * @return 0; KIV_COMMON_ERROR_INVALID_ARGUMENT for a null out-pointer or an
 *         unknown option; KIV_COMMON_ERROR_NOT_SUPPORTED for a record of an
 *         unknown version; KIV_DEVICE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivDevice_CreateFn_t)(
    Kiv_LogHandle_t logger, const KivDevice_Config_t** config,
    Kiv_DeviceHandle_t* device);

/**
 * Sets options of a device.
 *
 * @return KIV_DEVICE_ERROR_INVALID_HANDLE for a null or unknown handle, else
 *         as deviceCreate.
 */
typedef Kiv_ErrorHandle_t (*KivDevice_SetConfigFn_t)(
    Kiv_DeviceHandle_t device, const KivDevice_Config_t** config);

/**
 * Describes an open device; the record as in deviceGetPlatformInfo.
 *
 * @return 0; KIV_DEVICE_ERROR_INVALID_HANDLE for a null or unknown handle;
 *         KIV_DEVICE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivDevice_GetInfoFn_t)(
    Kiv_DeviceHandle_t device, const KivDevice_PlatformInfo_t** platformInfo);

/**
 * Closes a device.
 *
 * @return 0; KIV_DEVICE_ERROR_INVALID_HANDLE for a null or unknown handle;
 *         KIV_DEVICE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivDevice_FreeFn_t)(Kiv_DeviceHandle_t device);

static_assert(sizeof(KivDevice_CoreInfoV1_t) == 16, "layout");
static_assert(offsetof(KivDevice_CoreInfoV1_t, coreType) == 4, "layout");
static_assert(offsetof(KivDevice_CoreInfoV1_t, coreInfoExtension) == 8,
              "layout");
static_assert(sizeof(KivDevice_CoreInfo_t) == 24, "layout");
static_assert(offsetof(KivDevice_CoreInfo_t, v1) == 8, "layout");
static_assert(sizeof(KivDevice_HardwareDeviceInfoV1_t) == 32, "layout");
static_assert(offsetof(KivDevice_HardwareDeviceInfoV1_t, deviceType) == 4,
              "layout");
static_assert(offsetof(KivDevice_HardwareDeviceInfoV1_t, numCores) == 8,
              "layout");
static_assert(offsetof(KivDevice_HardwareDeviceInfoV1_t, cores) == 16,
              "layout");
static_assert(offsetof(KivDevice_HardwareDeviceInfoV1_t, deviceInfoExtension) ==
                  24,
              "layout");
static_assert(sizeof(KivDevice_HardwareDeviceInfo_t) == 40, "layout");
static_assert(offsetof(KivDevice_HardwareDeviceInfo_t, v1) == 8, "layout");
static_assert(sizeof(KivDevice_PlatformInfoV1_t) == 16, "layout");
static_assert(offsetof(KivDevice_PlatformInfoV1_t, hwDevices) == 8, "layout");
static_assert(sizeof(KivDevice_PlatformInfo_t) == 24, "layout");
static_assert(offsetof(KivDevice_PlatformInfo_t, v1) == 8, "layout");
static_assert(sizeof(KivDevice_Config_t) == 16, "layout");
static_assert(offsetof(KivDevice_Config_t, customConfig) == 8, "layout");

KIV_EXTERN_C_END

#endif
