// orvane-viewer: opens XYZ point files and DSAA grids and shows them as a 3-D surface or
// a contour map. With --export and --quit it renders a file to a PNG without a window.

#include <QApplication>
#include <QCoreApplication>
#include <QFileInfo>
#include <QCommandLineParser>
#include <QRegularExpression>
#include <QTimer>

#include <cstdlib>
#include <iostream>

#include "viewer_window.h"

namespace {

// "800x600" -> 800 x 600; an invalid size for anything else.
QSize ParseSize(const QString& text) {
  static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})[xX](\\d{1,5})$"));
  const QRegularExpressionMatch match = pattern.match(text.trimmed());
  if (!match.hasMatch()) return {};
  const int width = match.captured(1).toInt();
  const int height = match.captured(2).toInt();
  if (width < 1 || height < 1 || width > 16384 || height > 16384) return {};
  return {width, height};
}

bool HasDisplay() {
  return std::getenv("QT_QPA_PLATFORM") != nullptr || std::getenv("DISPLAY") != nullptr ||
         std::getenv("WAYLAND_DISPLAY") != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication::setOrganizationName(QStringLiteral("Orvane"));
  QCoreApplication::setApplicationName(QStringLiteral("orvane-viewer"));
  QCoreApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));

  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Grids and plots XYZ data as 3-D surfaces and contour maps."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("A data file to open: XYZ text, a DSAA grid, a GDAL raster (GeoTIFF, NetCDF as FILE.nc:VAR, ...) or vector points."));
  const QCommandLineOption exportOption(QStringLiteral("export"), QStringLiteral("Render the plot to a PNG or PDF file."),
                                        QStringLiteral("OUT.png|OUT.pdf"));
  const QCommandLineOption sizeOption(QStringLiteral("size"),
                                      QStringLiteral("The exported picture's size (default 1200x900)."),
                                      QStringLiteral("WxH"), QStringLiteral("1200x900"));
  const QCommandLineOption settingsOption(QStringLiteral("settings"),
                                          QStringLiteral("Apply saved plot settings (a .state file)."),
                                          QStringLiteral("FILE"));
  const QCommandLineOption quitOption(QStringLiteral("quit"),
                                      QStringLiteral("Quit when done instead of showing the window."));
  parser.addOptions({exportOption, sizeOption, settingsOption, quitOption});
  {
    // Help, the version and bad options are answered here, with no display needed.
    const QCoreApplication parsing(argc, argv);
    parser.process(parsing);
  }
  const bool quit = parser.isSet(quitOption);
  if (!HasDisplay()) {
    if (!quit) {
      std::cerr << "orvane-viewer: there is no display to show the window on (DISPLAY or WAYLAND_DISPLAY); "
                   "--export OUT.png --quit renders without one\n";
      return 2;
    }
    // A script run on a machine without a display still renders: the window is never shown.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
  }
  QApplication app(argc, argv);
  QApplication::setApplicationDisplayName(QStringLiteral("Orvane Viewer"));

  const QStringList files = parser.positionalArguments();
  if (files.size() > 1) {
    std::cerr << "orvane-viewer: give one data FILE at most\n";
    return 2;
  }
  const QSize size = ParseSize(parser.value(sizeOption));
  if (!size.isValid()) {
    std::cerr << "orvane-viewer: --size must be WIDTHxHEIGHT with each side from 1 to 16384, as in 800x600\n";
    return 2;
  }
  const QString exportPath = parser.value(exportOption);
  const QString exportKind = QFileInfo(exportPath).suffix().toLower();
  if (parser.isSet(exportOption) && exportKind != QStringLiteral("png") && exportKind != QStringLiteral("pdf")) {
    std::cerr << "orvane-viewer: " << exportPath.toStdString() << ": cannot export "
              << (exportKind.isEmpty() ? std::string("a file without an extension") : "." + exportKind.toStdString() + " files")
              << "; the viewer exports .png and .pdf\n";
    return 2;
  }

  orvane::viewer::ViewerWindow window;
  window.setQuiet(quit);
  bool ok = true;
  if (files.isEmpty()) {
    window.showSample();
  } else {
    ok = window.openFile(files.front());
  }
  if (ok && parser.isSet(settingsOption)) ok = window.openSettings(parser.value(settingsOption));
  if (ok && parser.isSet(exportOption)) {
    ok = exportKind == QStringLiteral("pdf") ? window.exportPdf(exportPath) : window.exportPng(exportPath, size);
  }
  if (quit) return ok ? 0 : 1;
  window.setQuiet(false);
  window.show();
  return QApplication::exec();
}
