#ifndef KIV_SAVER_H
#define KIV_SAVER_H

/**
 * The Saver's own options: where a recording goes and how it is written.
 *
 *   KivSaver_Config_t directory = {KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY,
 *                                  {.outputDirectory = "/tmp/recording"}};
 *   const KivSaver_Config_t* options[] = {&directory, NULL};
 *   KivSaver_initialize(options);
 *
 * Without a call the recording goes to "./saver_output/", into the model file
 * "saver_output.c" and the data file "params.bin".
 */

#include "../KivCommon.h"

KIV_EXTERN_C_BEGIN

/* The last two options have no OPTION in their names. */
typedef enum {
  KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY = 0,
  KIV_SAVER_CONFIG_OPTION_APPEND_TIMESTAMP = 1,
  KIV_SAVER_CONFIG_OPTION_BACKEND_ID = 2,
  KIV_SAVER_CONFIG_OPTION_FILE_CONFIG = 3,
  KIV_SAVER_CONFIG_WRITE_OUTPUT_HEADER = 4,
  KIV_SAVER_CONFIG_WRITE_OUTPUT_FOOTER = 5,
  KIV_SAVER_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivSaver_ConfigOption_t;

/** Names of the two files, without directories. */
typedef struct {
  const char* modelFileName;
  const char* dataFileName;
} KivSaver_FileConfig_t;

typedef struct {
  KivSaver_ConfigOption_t option;
  union {
    const char* outputDirectory;
    /** 1 to put the time into both file names */
    uint8_t appendTimestamp;
    /** The backend that the recording is for; needed to record its custom
     * configs. */
    uint32_t backendId;
    KivSaver_FileConfig_t fileConfig;
    /** 0 to append to a model file that has its header already */
    uint8_t writeHeader;
    /** 0 to leave the model file open for another session's calls */
    uint8_t writeFooter;
  };
} KivSaver_Config_t;

/**
 * Sets options, before the first call of the API or later. Texts are copied.
 *
 * Once files are open, KIV_SAVER_CONFIG_OPTION_FILE_CONFIG switches to new
 * ones, and the other options are accepted beside it only; the time stamp must
 * come before the first call. The options 4 and 5 always need option 3 beside
 * them.
 *
 * @param config null-terminated list of pointers to records; null for none.
 * @return 0; KIV_COMMON_ERROR_INVALID_ARGUMENT for an unknown option or file
 *         names that are null or hold a slash; KIV_BACKEND_ERROR_OPTION_TIMING
 *         for an option that comes too late or without option 3 (nothing is
 *         changed in either case); KIV_BACKEND_ERROR_GENERAL if the switch to
 *         new files failed.
 */
KIV_API Kiv_ErrorHandle_t KivSaver_initialize(const KivSaver_Config_t** config);

/** The type of KivSaver_initialize, for clients that load the library. */
typedef Kiv_ErrorHandle_t (*KivSaver_InitializeFn_t)(
    const KivSaver_Config_t** config);

static_assert(sizeof(KivSaver_Config_t) == 24, "layout");
static_assert(offsetof(KivSaver_Config_t, outputDirectory) == 8, "layout");
static_assert(offsetof(KivSaver_FileConfig_t, dataFileName) == 8, "layout");

KIV_EXTERN_C_END

#endif
