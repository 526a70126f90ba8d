#ifndef KIV_LOG_H
#define KIV_LOG_H

/**
 * Logging: one logger a library, shared by everything in the process.
 */

#include <stdarg.h>

#include "KivCommon.h"

KIV_EXTERN_C_BEGIN

/** A logger passes on messages of its level and of all lower numbers. */
typedef enum {
  KIV_LOG_LEVEL_ERROR = 1,
  KIV_LOG_LEVEL_WARN = 2,
  KIV_LOG_LEVEL_INFO = 3,
  KIV_LOG_LEVEL_VERBOSE = 4,
  KIV_LOG_LEVEL_DEBUG = 5,
  KIV_LOG_LEVEL_MAX = 0x7FFFFFFF
} KivLog_Level_t;

/**
 * Receives one message: a printf format, its level, the time in nanoseconds
 * since the logger was created, and the format's arguments.
 *
 * The texts and the arguments are valid during the call only. The callback may
 * be called from any thread that uses the library, from several at once. It may
 * call the library, and may exit the process, but neither throw nor end its
 * thread.
 */
typedef void (*KivLog_Callback_t)(const char* format, KivLog_Level_t level,
                                  uint64_t timestamp, va_list arguments);

/**
 * Creates the logger, or replaces the one there is; each creation needs its
 * own logFree.
 *
 * @param callback receives the messages; null for the library's own printer.
 * @param level the highest level passed on, 1 to 5.
 * @param logger receives the handle.
 * @return 0; KIV_LOG_ERROR_INVALID_LEVEL for a level outside 1 to 5;
 *         KIV_LOG_ERROR_NOT_CREATED if the logger could not be made.
 */
typedef Kiv_ErrorHandle_t (*KivLog_CreateFn_t)(KivLog_Callback_t callback,
                                               KivLog_Level_t level,
                                               Kiv_LogHandle_t* logger);

/**
 * Changes the highest level that the logger passes on.
 *
 * @return 0; KIV_LOG_ERROR_NOT_CREATED without a logger;
 *         KIV_LOG_ERROR_INVALID_LEVEL for a level outside 1 to 5;
 *         KIV_LOG_ERROR_GENERAL if the logger refuses the level.
 */
typedef Kiv_ErrorHandle_t (*KivLog_SetLogLevelFn_t)(Kiv_LogHandle_t logger,
                                                    KivLog_Level_t level);

/**
 * Gives one handle back; the last one ends the logger. A message that is being
 * delivered on another thread is delivered to its end.
 *
 * @return 0; KIV_LOG_ERROR_NOT_CREATED without a logger.
 */
typedef Kiv_ErrorHandle_t (*KivLog_FreeFn_t)(Kiv_LogHandle_t logger);

static_assert(sizeof(KivLog_Level_t) == 4, "enums are 32 bits wide");

KIV_EXTERN_C_END

#endif
