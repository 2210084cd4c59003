// The orvane command: renders data files and reports facts about them from a shell.
// Each sub-command registers itself from its own file (commands.h).

#include <csignal>
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "orvane/core/error.h"
#include "orvane/version.h"

int main(int argc, char** argv) {
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
