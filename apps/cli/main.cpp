// The orvane command: renders data files and reports facts about them from a shell.
// Each sub-command registers itself from its own file (commands.h).

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

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

// The number of single-character edits that turn a into b.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? std::size_t{0} : std::size_t{1})});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// The name nearest to word, or "" when none is within a third of its length.
std::string Nearest(const std::string& word, const std::vector<std::string>& names) {
  std::string best;
  std::size_t bestDistance = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& name : names) {
    const std::size_t d = EditDistance(word, name);
    if (d < bestDistance) {
      best = name;
      bestDistance = d;
    }
  }
  return best;
}

std::vector<std::string> LongOptions(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

// What went wrong in a command line the parser refused, when it is an unknown command or
// option: named, with the nearest known one. Empty when it is something else.
std::string UnknownName(const CLI::App& app, int argc, char** argv) {
  const CLI::App* command = nullptr;
  std::vector<std::string> commands;
  const std::vector<const CLI::App*> subcommands = std::as_const(app).get_subcommands({});
  for (const CLI::App* sub : subcommands) commands.push_back(sub->get_name());
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--") break;
    if (command == nullptr && !arg.empty() && arg[0] != '-') {
      for (const CLI::App* sub : subcommands) {
        if (sub->get_name() == arg) command = sub;
      }
      if (command != nullptr) continue;
      const std::string near = Nearest(arg, commands);
      return "unknown command '" + arg + "'" + (near.empty() ? "" : "; did you mean " + near + "?");
    }
    if (arg.rfind("--", 0) != 0) continue;
    const std::string name = arg.substr(0, arg.find('='));
    const CLI::App& scope = command != nullptr ? *command : app;
    std::vector<std::string> known = LongOptions(scope);
    if (std::find(known.begin(), known.end(), name) != known.end()) continue;
    if (command != nullptr) {
      const std::vector<std::string> global = LongOptions(app);
      if (std::find(global.begin(), global.end(), name) != global.end()) continue;
    }
    const std::string near = Nearest(name, known);
    return (command != nullptr ? command->get_name() + ": " : std::string()) + "unknown option " + name +
           (near.empty() ? "" : "; did you mean " + near + "?");
  }
  return "";
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
  orvane::cli::AddVariogramCommand(app);
  orvane::cli::AddCvCommand(app);

  // Past a file-size limit a write then fails with EFBIG, which the output files report,
  // instead of the signal ending the process with a truncated file.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) {
      // Nothing to do: show what there is to do, as a usage mistake.
      std::cout << app.help();
      return 2;
    }
  } catch (const CLI::ParseError& e) {
    // --help and --version end here with status 0; usage mistakes get status 2.
    if (e.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return app.exit(e);
    const std::string unknown = UnknownName(app, argc, argv);
    std::cerr << "orvane: " << (unknown.empty() ? std::string(e.what()) : unknown) << "\n"
              << "orvane: run 'orvane --help' or 'orvane COMMAND --help' for the options\n";
    return 2;
  } catch (const orvane::Error& e) {
    std::cerr << "orvane: " << e.Description() << "\n";
    return e.Number() == 18 ? 130 : 2;  // an interrupted run ends as SIGINT's would
  } catch (const std::exception& e) {
    std::cerr << "orvane: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
