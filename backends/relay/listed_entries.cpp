#include "call.h"
#include "entries.h"

// Functions that the recorder has no statements for although they change
// something: a replay goes without them, so they are listed.
namespace kiv::relay {
namespace {

using Table = KivInterface_Implementation_t;

template <typename... Arguments>
using Slot = Kiv_ErrorHandle_t (*Table::*)(Arguments...);

// The function for a slot with these arguments.
template <auto kSlot, const char* kName, typename... Arguments>
Kiv_ErrorHandle_t listed(Arguments... arguments) {
  Call call(kName);
  call.cannotBeRecorded();
  return call.answer((real().*kSlot)(arguments...));
}

template <auto kSlot, const char* kName, typename... Arguments>
void add(Table& table, Slot<Arguments...>) {
  table.*kSlot = listed<kSlot, kName, Arguments...>;
}

template <auto kSlot, const char* kName>
void add(Table& table) {
  add<kSlot, kName>(table, kSlot);
}

constexpr char kMemRegister[] = "memRegister";
constexpr char kMemDeRegister[] = "memDeRegister";
constexpr char kSignalCreate[] = "signalCreate";
constexpr char kSignalSetConfig[] = "signalSetConfig";
constexpr char kSignalTrigger[] = "signalTrigger";
constexpr char kSignalFree[] = "signalFree";
constexpr char kPrepareEnvironment[] = "graphPrepareEnvironment";
constexpr char kReleaseEnvironment[] = "graphReleaseEnvironment";
constexpr char kLater56[] = "laterOperation56";
constexpr char kLater57[] = "laterOperation57";
constexpr char kLater58[] = "laterOperation58";

}  // namespace

void addListedEntries(Table& table) {
  add<&Table::memRegister, kMemRegister>(table);
  add<&Table::memDeRegister, kMemDeRegister>(table);
  add<&Table::signalCreate, kSignalCreate>(table);
  add<&Table::signalSetConfig, kSignalSetConfig>(table);
  add<&Table::signalTrigger, kSignalTrigger>(table);
  add<&Table::signalFree, kSignalFree>(table);
  add<&Table::graphPrepareEnvironment, kPrepareEnvironment>(table);
  add<&Table::graphReleaseEnvironment, kReleaseEnvironment>(table);
  add<&Table::laterOperation56, kLater56>(table);
  add<&Table::laterOperation57, kLater57>(table);
  add<&Table::laterOperation58, kLater58>(table);
}

}  // namespace kiv::relay
