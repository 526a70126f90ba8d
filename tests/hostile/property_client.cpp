// Makes a random session that is right in every call; its seed is the argument,
// see client_main.h. Tells which calls a library refused, if any.

#include <cstdio>
#include <random>
#include <vector>

#include "hostile/random_caller.h"
#include "support/client_main.h"

namespace {

bool runSession(const KivInterface_Implementation_t& api,
                const std::string& seed) {
  std::mt19937_64 random(std::stoul(seed));
  std::vector<std::uint8_t> bytes(500 + random() % 8000);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  kiv::test::Source source(bytes);
  kiv::test::RandomCaller caller(api, source,
                                 kiv::test::RandomCaller::Manner::kFair);
  while (!source.isEmpty()) caller.step();
  for (const std::string& failure : caller.failures())
    std::fprintf(stderr, "refused: %s\n", failure.c_str());
  return caller.failures().empty();
}

}  // namespace

int main(int argc, char** argv) {
  return kiv::test::clientMain(argc, argv, runSession);
}
