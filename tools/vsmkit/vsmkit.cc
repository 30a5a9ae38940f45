// vsmkit: the command line to the module's kits that no export reaches, for people and for
// scripts. `vsmkit KIT ...` runs one subcommand; exit 0 on success, 1 when the kit refuses the
// operation, 2 on a usage error.
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "kit_command.h"
#include "subcommands.h"

namespace vsmkit {
namespace {

// One row per subcommand, in the order --help lists them.
const Subcommand kSubcommands[] = {
    {"zlib", kZlibUsage, RunZlib},
    {"unzip", kUnzipUsage, RunUnzip},
    {"image", ImageUsage(), RunImage},
    {"url", kUrlUsage, RunUrl},
};

void PrintHelp(FILE* out) {
  fputs("usage: vsmkit KIT ARGUMENTS...\n       vsmkit --help\n\n", out);
  for (const Subcommand& subcommand : kSubcommands) {
    if (subcommand.name != nullptr) fprintf(out, "%s\n", subcommand.usage);
  }
}

int Main(int argc, char** argv) {
  if (argc < 2) {
    PrintHelp(stderr);
    return 2;
  }
  const std::string name = argv[1];
  if (name == "--help" || name == "-h" || name == "help") {
    PrintHelp(stdout);
    return 0;
  }
  for (const Subcommand& subcommand : kSubcommands) {
    if (subcommand.name == nullptr || name != subcommand.name) continue;
    const Arguments arguments(argv + 2, argv + argc);
    try {
      return subcommand.run(arguments);
    } catch (const UsageError& error) {
      fprintf(stderr, "vsmkit %s: %s\nusage:\n%s\n", subcommand.name, error.what(),
              subcommand.usage);
      return 2;
    } catch (const OperationFailed& error) {
      fprintf(stderr, "vsmkit %s: %s\n", subcommand.name, error.what());
      return 1;
    } catch (const std::exception& error) {
      fprintf(stderr, "vsmkit %s: %s\n", subcommand.name, error.what());
      return 1;
    }
  }
  fprintf(stderr, "vsmkit: unknown kit: %s\n", name.c_str());
  PrintHelp(stderr);
  return 2;
}

}  // namespace
}  // namespace vsmkit

int main(int argc, char** argv) { return vsmkit::Main(argc, argv); }
