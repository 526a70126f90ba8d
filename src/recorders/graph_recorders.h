#pragma once

#include <memory>
#include <span>

#include "KivGraph.h"
#include "session/session.h"

namespace kiv::recorders {

// Each writes one call of the graph family and returns what the client gets: 0,
// 12000 for an unknown profile, a value writer's status, or 5999 when the call
// could not be written (4999 for graphAddNode). From any thread.

// Create a graph and store its handle in `out`. 6003 when the context has a
// graph of that name; 1002 without memory; nothing remains of a call that
// fails.
Status recordGraphCreate(session::Session& session,
                         std::shared_ptr<session::SaverContext> context,
                         const char* name, const KivGraph_Config_t** config,
                         Kiv_GraphHandle_t* out);
Status recordGraphCreateSubgraph(session::Session& session,
                                 const session::SaverGraph& parent,
                                 const char* name, Kiv_GraphHandle_t* out);

// A graph that the context has is retrieved into a second variable and keeps
// its handle; any other name gives a new graph.
Status recordGraphRetrieve(session::Session& session,
                           std::shared_ptr<session::SaverContext> context,
                           const char* name, Kiv_GraphHandle_t* out);

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
// it. 6000 for a count without its array.
Status recordGraphExecute(session::Session& session, session::SaverGraph& graph,
                          std::span<const Kiv_Tensor_t> inputs,
                          std::span<const Kiv_Tensor_t> outputs,
                          Kiv_ProfileHandle_t profile);

}  // namespace kiv::recorders
