// Makes a random session of calls that no client should make; its seed is the
// argument, see client_main.h.

#include <random>
#include <vector>

#include "hostile/random_caller.h"
#include "support/client_main.h"

namespace {

bool runSession(const KivInterface_Implementation_t& api,
                const std::string& seed) {
  std::mt19937_64 random(std::stoul(seed));
  std::vector<std::uint8_t> bytes(500 + random() % 4000);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  kiv::test::Source source(bytes);
  kiv::test::RandomCaller caller(api, source,
                                 kiv::test::RandomCaller::Manner::kHostile);
  while (!source.isEmpty()) caller.step();
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  return kiv::test::clientMain(argc, argv, runSession);
}
