#pragma once

#include "KivProfile.h"
#include "session/session.h"

namespace kiv::recorders {

// Each writes one call of the profile family and returns what the client gets:
// 0, 4011 for an unknown backend, a config writer's status, or 12999 when the
// call could not be written. Event lists are reported empty, 0 and null; other
// results are never filled in. From any thread.

Status recordProfileCreate(session::Session& session,
                           const session::SaverProfile& profile,
                           Kiv_BackendHandle_t backend,
                           KivProfile_Level_t level);
Status recordProfileSetConfig(session::Session& session,
                              const session::SaverProfile& profile,
                              const KivProfile_Config_t** config);
Status recordProfileGetEvents(session::Session& session,
                              const session::SaverProfile& profile,
                              const KivProfile_EventId_t** events,
                              uint32_t* numEvents);
Status recordProfileGetSubEvents(session::Session& session,
                                 KivProfile_EventId_t event,
                                 const KivProfile_EventId_t** subEvents,
                                 uint32_t* numSubEvents);
Status recordProfileGetEventData(session::Session& session,
                                 KivProfile_EventId_t event,
                                 const KivProfile_EventData_t* data);
Status recordProfileGetExtendedEventData(
    session::Session& session, KivProfile_EventId_t event,
    const KivProfile_ExtendedEventData_t* data);
Status recordProfileFree(session::Session& session,
                         const session::SaverProfile& profile);

}  // namespace kiv::recorders
