// Runs the golden session on a library; for the arguments see client_main.h.

#include "golden/golden_session.h"
#include "support/client_main.h"

int main(int argc, char** argv) {
  return kiv::test::clientMain(
      argc, argv,
      [](const KivInterface_Implementation_t& api, const std::string&) {
        kiv::test::runGoldenSession(api);
        return true;
      });
}
