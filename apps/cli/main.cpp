// The orvane command: renders data files and reports facts about them from a shell.
// Each sub-command registers itself from its own file (commands.h).

#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "orvane/core/error.h"
#include "orvane/version.h"

namespace {

// A render of a large grid spends a good part of its time faulting in fresh pages of
// its big arrays (a million-node grid holds several arrays of 8 MB, and the frame's
// vertex data). glibc's allocator backs large blocks with transparent huge pages when
// its hugetlb tunable is set, which it reads only at start-up: so the command sets it
// and starts itself again, once. A user's own GLIBC_TUNABLES are kept; one that already
// names hugetlb is left alone, and a failed restart just carries on as before.
void RestartWithHugePages(char** argv) {
  const char* tunables = std::getenv("GLIBC_TUNABLES");
  const std::string current = tunables != nullptr ? tunables : "";
  if (current.find("glibc.malloc.hugetlb") != std::string::npos) return;
  char self[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  if (length <= 0) return;
  self[length] = '\0';
  const std::string wanted = current.empty() ? "glibc.malloc.hugetlb=1" : current + ":glibc.malloc.hugetlb=1";
  if (setenv("GLIBC_TUNABLES", wanted.c_str(), 1) != 0) return;
  execv(self, argv);
  // Still here: the restart failed; run as we are, without the tunable.
  if (tunables != nullptr) {
    setenv("GLIBC_TUNABLES", current.c_str(), 1);
  } else {
    unsetenv("GLIBC_TUNABLES");
  }
}

}  // namespace

int main(int argc, char** argv) {
  RestartWithHugePages(argv);
  CLI::App app{"orvane: render Z = f(X, Y) data files as 3-D surfaces and contour maps.",
               "orvane"};
  app.set_version_flag("--version", std::string("orvane ") + ORVANE_VERSION_STRING,
                       "Print the version and exit");
  app.require_subcommand(0, 1);
  app.footer("Run 'orvane COMMAND --help' for the options of a command.");
  orvane::cli::AddInfoCommand(app);
  orvane::cli::AddTriangulateCommand(app);
  orvane::cli::AddContourCommand(app);
  orvane::cli::AddGridCommand(app);
  orvane::cli::AddRenderCommand(app);

  // Past a file-size limit a write then fails with EFBIG, which the output files report,
  // instead of the signal ending the process with a truncated file.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) std::cout << app.help();
  } catch (const CLI::ParseError& e) {
    // --help and --version end here with status 0; usage mistakes get status 2.
    return app.exit(e) == 0 ? 0 : 2;
  } catch (const orvane::Error& e) {
    std::cerr << "orvane: " << e.Description() << "\n";
    return e.Number() == 18 ? 130 : 2;  // an interrupted run ends as SIGINT's would
  } catch (const std::exception& e) {
    std::cerr << "orvane: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
