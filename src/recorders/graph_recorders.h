#pragma once

#include <span>

#include "KivGraph.h"
#include "session/session.h"

namespace kiv::recorders {

// Each writes one call of the graph family and returns what the client gets:
// 0, 12000 for an unknown profile, a value writer's status, or 5999 when the
// call could not be written (4999 for graphAddNode).

Status recordGraphCreate(session::Session& session,
                         const session::SaverContext& context,
                         const session::SaverGraph& graph, const char* name,
                         const KivGraph_Config_t** config);

Status recordGraphCreateSubgraph(session::Session& session,
                                 const session::SaverGraph& parent,
                                 const session::SaverGraph& subgraph,
                                 const char* name);

Status recordGraphSetConfig(session::Session& session,
                            const session::SaverGraph& graph,
                            const KivGraph_Config_t** config);

Status recordGraphAddNode(session::Session& session,
                          const session::SaverGraph& graph,
                          const Kiv_OpConfig_t& opConfig);

Status recordGraphFinalize(session::Session& session,
                           const session::SaverGraph& graph,
                           Kiv_ProfileHandle_t profile);

// Writes all tensors anew, so that the data of each execution is read back with
// it.
Status recordGraphExecute(session::Session& session, session::SaverGraph& graph,
                          std::span<const Kiv_Tensor_t> inputs,
                          std::span<const Kiv_Tensor_t> outputs,
                          Kiv_ProfileHandle_t profile);

}  // namespace kiv::recorders
