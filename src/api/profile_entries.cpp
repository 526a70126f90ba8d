#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "recorders/profile_recorders.h"

namespace kiv::api {
namespace {

using session::SaverProfile;
using session::Session;

constexpr CreationFailures kProfileCreationFailures = {kProfileOutIsNull,
                                                       kProfileNotCreated};

Found<SaverProfile> findProfile(Session& session, Kiv_ProfileHandle_t handle,
                                const Failure& ifUnknown = kProfileIsUnknown) {
  return lookUp(session.profiles(), handle, kProfileIsNull, ifUnknown);
}

// Found, recorded, erased; no lock is held while it is recorded.
Status releaseProfile(Session& session, Kiv_ProfileHandle_t handle) {
  const auto profile = findProfile(session, handle, kFreedProfileIsUnknown);
  if (!profile) return profile.status;
  const Status status = recorders::recordProfileFree(session, *profile);
  if (!session.profiles().erase(session::fromApi(handle)))
    return fail(kProfileNotFreed);
  return status;
}

}  // namespace

Code profileCreate(Kiv_BackendHandle_t backend, KivProfile_Level_t level,
                   Kiv_ProfileHandle_t* profile) {
  return enter([&](Session& session) {
    return create(session, session.profiles(), &Session::newProfile, profile,
                  kProfileCreationFailures, [&](const SaverProfile& created) {
                    return recorders::recordProfileCreate(session, created,
                                                          backend, level);
                  });
  });
}

Code profileSetConfig(Kiv_ProfileHandle_t handle,
                      const KivProfile_Config_t** config) {
  return enter([&](Session& session) {
    const auto profile = findProfile(session, handle);
    return profile
               ? recorders::recordProfileSetConfig(session, *profile, config)
               : profile.status;
  });
}

Code profileGetEvents(Kiv_ProfileHandle_t handle,
                      const KivProfile_EventId_t** events,
                      uint32_t* numEvents) {
  return enter([&](Session& session) {
    const auto profile = findProfile(session, handle);
    return profile ? recorders::recordProfileGetEvents(session, *profile,
                                                       events, numEvents)
                   : profile.status;
  });
}

Code profileGetSubEvents(KivProfile_EventId_t event,
                         const KivProfile_EventId_t** subEvents,
                         uint32_t* numSubEvents) {
  return enter([&](Session& session) {
    return recorders::recordProfileGetSubEvents(session, event, subEvents,
                                                numSubEvents);
  });
}

Code profileGetEventData(KivProfile_EventId_t event,
                         KivProfile_EventData_t* data) {
  return enter([&](Session& session) {
    return recorders::recordProfileGetEventData(session, event, data);
  });
}

Code profileGetExtendedEventData(KivProfile_EventId_t event,
                                 KivProfile_ExtendedEventData_t* data) {
  return enter([&](Session& session) {
    return recorders::recordProfileGetExtendedEventData(session, event, data);
  });
}

Code profileFree(Kiv_ProfileHandle_t profile) {
  return enter(
      [&](Session& session) { return releaseProfile(session, profile); });
}

}  // namespace kiv::api
