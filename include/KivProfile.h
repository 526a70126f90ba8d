#ifndef KIV_PROFILE_H
#define KIV_PROFILE_H

/**
 * Profiles: figures that a backend gathers during the calls that a profile's
 * handle is passed to.
 */

#include "KivCommon.h"

KIV_EXTERN_C_BEGIN

/** How much is gathered; a backend may define more values. */
typedef uint32_t KivProfile_Level_t;
#define KIV_PROFILE_LEVEL_BASIC 1u
#define KIV_PROFILE_LEVEL_DETAILED 2u

/** Names one event of a profile. */
typedef uint64_t KivProfile_EventId_t;

typedef enum {
  KIV_PROFILE_CONFIG_OPTION_CUSTOM = 0,
  KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS = 1,
  KIV_PROFILE_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivProfile_ConfigOption_t;

/** A record of the backend's own making. */
typedef void* KivProfile_CustomConfig_t;

typedef struct {
  KivProfile_ConfigOption_t option;
  union {
    KivProfile_CustomConfig_t customConfig;
    uint64_t numMaxEvents;
  };
} KivProfile_Config_t;

/** What an event's value counts. */
typedef enum {
  KIV_PROFILE_EVENT_UNIT_NONE = 0,
  KIV_PROFILE_EVENT_UNIT_MICROSECONDS = 1,
  KIV_PROFILE_EVENT_UNIT_BYTES = 2,
  KIV_PROFILE_EVENT_UNIT_CYCLES = 3,
  KIV_PROFILE_EVENT_UNIT_COUNT = 4,
  KIV_PROFILE_EVENT_UNIT_UNDEFINED = 0x7FFFFFFF
} KivProfile_EventUnit_t;

/** One event; the identifier belongs to the library. */
typedef struct {
  uint32_t type;
  KivProfile_EventUnit_t unit;
  uint64_t value;
  const char* identifier;
} KivProfile_EventData_t;

/** One event with the time at which it was taken. */
typedef struct {
  uint32_t type;
  KivProfile_EventUnit_t unit;
  /** nanoseconds */
  uint64_t timestamp;
  uint64_t value;
  const char* identifier;
  uint64_t reserved[2];
} KivProfile_ExtendedEventData_t;

/**
 * Creates a profile.
 *
 * @param backend the backend, or null.
 * @param profile receives the handle, 0 if the call fails; given back with
 *        profileFree.
 * @return 0; KIV_COMMON_ERROR_INVALID_ARGUMENT for a null out-pointer;
 *         KIV_BACKEND_ERROR_INVALID_HANDLE for an unknown backend;
 *         KIV_PROFILE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivProfile_CreateFn_t)(
    Kiv_BackendHandle_t backend, KivProfile_Level_t level,
    Kiv_ProfileHandle_t* profile);

/**
 * Sets options of a profile.
 *
 * @param config config list, or null.
 * @return 0; KIV_PROFILE_ERROR_INVALID_HANDLE for a null or unknown profile;
 *         KIV_COMMON_ERROR_INVALID_ARGUMENT for an unknown option;
 *         KIV_PROFILE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivProfile_SetConfigFn_t)(
    Kiv_ProfileHandle_t profile, const KivProfile_Config_t** config);

/**
 * Lists the events of a profile.
 *
 * @param events receives an array that the backend owns until profileFree; may
 *        be null. A recorder stores null.
 * @param numEvents receives the number of entries; may be null. A recorder
 *        stores 0.
 * @return 0; KIV_PROFILE_ERROR_INVALID_HANDLE for a null or unknown profile;
 *         KIV_PROFILE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivProfile_GetEventsFn_t)(
    Kiv_ProfileHandle_t profile, const KivProfile_EventId_t** events,
    uint32_t* numEvents);

/** Lists the events below an event; arguments as in profileGetEvents. */
typedef Kiv_ErrorHandle_t (*KivProfile_GetSubEventsFn_t)(
    KivProfile_EventId_t event, const KivProfile_EventId_t** subEvents,
    uint32_t* numSubEvents);

/**
 * Reads an event.
 *
 * @param data receives it; may be null. A recorder leaves it untouched.
 * @return 0; KIV_PROFILE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivProfile_GetEventDataFn_t)(
    KivProfile_EventId_t event, KivProfile_EventData_t* data);

/** Reads an event in its extended form, else as profileGetEventData. */
typedef Kiv_ErrorHandle_t (*KivProfile_GetExtendedEventDataFn_t)(
    KivProfile_EventId_t event, KivProfile_ExtendedEventData_t* data);

/**
 * Frees a profile; its handle is unknown afterwards.
 *
 * @return 0; KIV_PROFILE_ERROR_INVALID_HANDLE for a null or unknown profile;
 *         KIV_PROFILE_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivProfile_FreeFn_t)(Kiv_ProfileHandle_t profile);

static_assert(sizeof(KivProfile_Config_t) == 16, "layout");
static_assert(offsetof(KivProfile_Config_t, customConfig) == 8, "layout");

KIV_EXTERN_C_END

#endif
