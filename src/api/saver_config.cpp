#include <string>

#include "Saver/KivSaver.h"
#include "api/entry.h"
#include "format/enum_value.h"
#include "format/literals.h"
#include "output/output_settings.h"

namespace kiv::api {
namespace {

using output::OutputChanges;
using session::Session;

constexpr const char* kDefaultDirectory = "./saver_output/";
constexpr const char* kNullDirectory =
    "NULL output path provided, defaulting to ./saver_output/";
constexpr const char* kEmptyDirectory =
    "Empty output path provided, defaulting to ./saver_output/";

constexpr Failure kNullFileName = {Status::kInvalidArgument,
                                   "Model filename or data filename are NULL"};
constexpr Failure kSlashInFileName = {
    Status::kInvalidArgument,
    "Model filename or data filename contain slashes"};
constexpr Failure kSameFileNames = {
    Status::kInvalidArgument, "Model filename and data filename are the same"};
constexpr const char* kUnsafeFileName =
    "The data filename stands in the generated program as it is and will not "
    "read back so: %s";
constexpr Failure kUnknownOption = {
    Status::kInvalidArgument, "Unknown Saver config option provided: %ld"};

constexpr Failure kStampTooLate = {
    Status::kOptionTiming,
    "KIV_SAVER_CONFIG_OPTION_APPEND_TIMESTAMP must be provided before any "
    "other KIV APIs are called"};
constexpr Failure kBackendIdAlone = {
    Status::kOptionTiming,
    "KIV_SAVER_CONFIG_OPTION_BACKEND_ID must be provided concurrently with "
    "KIV_SAVER_CONFIG_OPTION_FILE_CONFIG if provided after any other KIV APIs "
    "have been called"};
constexpr Failure kDirectoryAlone = {
    Status::kOptionTiming,
    "KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY must be provided concurrently "
    "with KIV_SAVER_CONFIG_OPTION_FILE_CONFIG if provided after any other KIV "
    "APIs have been called"};
constexpr Failure kHeaderAlone = {
    Status::kOptionTiming,
    "KIV_SAVER_CONFIG_WRITE_OUTPUT_HEADER must be provided concurrently with "
    "KIV_SAVER_CONFIG_OPTION_FILE_CONFIG"};
constexpr Failure kFooterAlone = {
    Status::kOptionTiming,
    "KIV_SAVER_CONFIG_WRITE_OUTPUT_FOOTER must be provided concurrently with "
    "KIV_SAVER_CONFIG_OPTION_FILE_CONFIG"};

std::string directoryFrom(const char* text) {
  if (text != nullptr && *text != '\0') return text;
  log::log(log::Level::kWarning,
           text == nullptr ? kNullDirectory : kEmptyDirectory);
  return kDefaultDirectory;
}

Status readFileNames(const KivSaver_FileConfig_t& config,
                     OutputChanges& changes) {
  if (config.modelFileName == nullptr || config.dataFileName == nullptr)
    return fail(kNullFileName);
  const std::string model = config.modelFileName;
  const std::string data = config.dataFileName;
  if ((model + data).find_first_of("/\\") != std::string::npos)
    return fail(kSlashInFileName);
  if (model == data) return fail(kSameFileNames);
  if (format::isUnsafeInLiteral(data) || data.find('%') != std::string::npos)
    log::log(log::Level::kWarning, kUnsafeFileName, data.c_str());
  changes.fileNames = output::FileNames{model, data};
  return Status::kOk;
}

Status readOption(const KivSaver_Config_t& config, OutputChanges& changes) {
  const std::uint32_t option = format::enumValue(config.option);
  switch (option) {
    case KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY:
      changes.directory = directoryFrom(config.outputDirectory);
      return Status::kOk;
    case KIV_SAVER_CONFIG_OPTION_APPEND_TIMESTAMP:
      changes.saysTimeStamp = true;
      changes.stampedNames.reset();
      changes.timeStamp.clear();
      if (config.appendTimestamp != 0) output::stampFileNames(changes);
      return Status::kOk;
    case KIV_SAVER_CONFIG_OPTION_BACKEND_ID:
      changes.backendId = config.backendId;
      return Status::kOk;
    case KIV_SAVER_CONFIG_OPTION_FILE_CONFIG:
      return readFileNames(config.fileConfig, changes);
    case KIV_SAVER_CONFIG_WRITE_OUTPUT_HEADER:
      changes.writeHeader = config.writeHeader != 0;
      return Status::kOk;
    case KIV_SAVER_CONFIG_WRITE_OUTPUT_FOOTER:
      changes.writeFooter = config.writeFooter != 0;
      return Status::kOk;
    default:
      return fail(kUnknownOption, static_cast<long>(option));
  }
}

Status readOptions(const KivSaver_Config_t** config, OutputChanges& changes) {
  for (; config != nullptr && *config != nullptr; ++config) {
    if (const Status s = readOption(**config, changes); !ok(s)) return s;
  }
  return Status::kOk;
}

Status checkTiming(const OutputChanges& changes, bool started) {
  const bool withFileNames = changes.fileNames.has_value();
  if (started && changes.saysTimeStamp) return fail(kStampTooLate);
  if (withFileNames) return Status::kOk;
  if (started && changes.backendId) return fail(kBackendIdAlone);
  if (started && changes.directory) return fail(kDirectoryAlone);
  if (changes.writeHeader) return fail(kHeaderAlone);
  if (changes.writeFooter) return fail(kFooterAlone);
  return Status::kOk;
}

Status initialize(Session& session, const KivSaver_Config_t** config) {
  OutputChanges changes;
  if (const Status s = readOptions(config, changes); !ok(s)) return s;
  // Another thread may start the session in between; then the rules are
  // others.
  for (;;) {
    const bool started = session.started();
    if (const Status s = checkTiming(changes, started); !ok(s)) return s;
    if (const auto status = session.configure(changes, started)) return *status;
  }
}

}  // namespace
}  // namespace kiv::api

Kiv_ErrorHandle_t KivSaver_initialize(const KivSaver_Config_t** config) {
  using namespace kiv;
  return api::withoutExceptions([&] {
    const session::SessionUse use;
    return use.get() == nullptr ? Status::kBackendError
                                : api::initialize(*use.get(), config);
  });
}
