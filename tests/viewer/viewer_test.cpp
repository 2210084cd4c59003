// The viewer: opening files, keeping what is shown when a file is bad, settings files,
// cancelled resampling, the pointer's value, and the program run from a script.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QCheckBox>
#include <QProcess>
#include <QPushButton>
#include <QProgressDialog>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "color_map_icons.h"
#include "orvane/data/data_file.h"
#include "export_dialog.h"
#include "resampling_dialog.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/surface.h"
#include "orvane/core/color.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_sets.h"
#include "orvane/qt/surface_widget.h"
#include "orvane/render/cursor.h"
#include "orvane/render/view.h"
#include "orvane/resample/resampling.h"
#include "orvane/resample/variogram.h"
#include "viewer_window.h"

namespace orvane::viewer {
namespace {

class ViewerTest : public ::testing::Test {
 protected:
  QString Path(const QString& name) const { return dir_.filePath(name); }

  QString Write(const QString& name, const std::string& text) const {
    std::ofstream(Path(name).toStdString(), std::ios::binary) << text;
    return Path(name);
  }

  // Two humps over -3..3 x -2..2 on a jittered lattice: smooth enough to contour well.
  QString WriteHills(const QString& name, int side = 30) const {
    std::string text;
    for (int i = 0; i < side; ++i) {
      for (int j = 0; j < side; ++j) {
        const double x = -3.0 + 6.0 * (i + 0.25 * ((i * 7 + j * 3) % 5) / 5.0) / side;
        const double y = -2.0 + 4.0 * (j + 0.25 * ((i * 3 + j * 11) % 7) / 7.0) / side;
        const double z = 3.0 * std::exp(-((x - 1) * (x - 1) + y * y)) - 2.0 * std::exp(-((x + 1) * (x + 1) + y * y));
        text += std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z) + "\n";
      }
    }
    return Write(name, text);
  }

  // Answers the next message box after it opens, keeping its text.
  void CloseNextMessageBox(QString& text) {
    QTimer::singleShot(0, [&text] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (box == nullptr) return;
      text = box->text();
      box->accept();
    });
  }

  QTemporaryDir dir_;
};

// Pixels of an image that are strongly coloured (the colour-mapped plot, not the grey
// and black of the cube, text and background).
int ColouredPixels(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor c = image.pixelColor(x, y);
      if (c.hsvSaturation() > 150 && c.value() > 100) ++count;
    }
  }
  return count;
}

TEST_F(ViewerTest, ReadsGridsByTheirHeaderAndPointsOtherwiseAndRefusesWhatCannotBeDrawn) {
  const QString grid = Write("surface.txt", "DSAA\n3 2\n0 2\n10 11\n-1 4\n0 1 2\n3 4 -1\n");
  const DataFile g = ReadDataFile(grid.toStdString());
  EXPECT_TRUE(g.isGrid);
  EXPECT_EQ(g.Summary(), "3 x 2 grid");

  const QString points = Write("points.grd", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n1 1 6\n");
  const DataFile p = ReadDataFile(points.toStdString());
  EXPECT_FALSE(p.isGrid);
  EXPECT_EQ(p.merged, 1U);  // (1, 1) twice: one point of mean Z 5
  EXPECT_EQ(p.Summary(), "4 points");

  try {
    ReadDataFile(Write("huge.xyz", "0 0 1\n1 0 1e301\n0 1 3\n").toStdString());
    ADD_FAILURE() << "a Z of 1e301 was taken";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 5);
    EXPECT_NE(e.Description().find("huge.xyz: the Z of point 2 is too large to draw (the limit is 1e300)"), std::string::npos) << e.Description();
  }
}

TEST_F(ViewerTest, ABadFileShowsTheErrorWithItsLineAndKeepsWhatIsShown) {
  ViewerWindow window;
  const QString good = WriteHills("hills.xyz");
  ASSERT_TRUE(window.openFile(good));
  DataSet& data = window.plot().surface().DataSets().Item(0);
  const std::vector<double> before = data.MeshTriangles();
  ASSERT_FALSE(before.empty());
  const std::vector<std::uint8_t> state = window.plot().surface().State(orvStateTypeFormattingAndData);

  const QString bad = Write("bad.xyz", "0 0 1\n1 0 2\n1 one 3\n");
  QString shown;
  CloseNextMessageBox(shown);
  EXPECT_FALSE(window.openFile(bad));
  EXPECT_TRUE(shown.contains(QStringLiteral("bad.xyz:3:"))) << shown.toStdString();
  EXPECT_EQ(shown, window.lastError());
  EXPECT_EQ(data.MeshTriangles(), before);
  EXPECT_EQ(window.plot().surface().State(orvStateTypeFormattingAndData), state);
  ASSERT_TRUE(window.dataFile().has_value());
  EXPECT_EQ(window.dataFile()->name, good.toStdString());

  // A file that is not there, and settings bytes that are not settings, likewise.
  CloseNextMessageBox(shown);
  EXPECT_FALSE(window.openFile(Path("missing.xyz")));
  EXPECT_TRUE(shown.contains(QStringLiteral("cannot open the file"))) << shown.toStdString();
  CloseNextMessageBox(shown);
  EXPECT_FALSE(window.openSettings(Write("junk.state", "not a saved state")));
  EXPECT_FALSE(shown.isEmpty());
  EXPECT_EQ(window.plot().surface().State(orvStateTypeFormattingAndData), state);
}

TEST_F(ViewerTest, TheMenusSetFillProjectionsAspectAndBaseAndFollowTheControl) {
  ViewerWindow window;
  Surface& s = window.plot().surface();
  // The viewer's own defaults (exact bands, no projections), also after the sample, whose
  // interpolated colours give way to the bands.
  EXPECT_TRUE(s.Contouring().ExactBands());
  window.showSample();
  EXPECT_TRUE(s.Contouring().ExactBands());
  EXPECT_FALSE(s.Contouring().InterpolateColors());
  ASSERT_TRUE(window.openFile(WriteHills("hills.xyz")));
  DataSet& data = s.DataSets().Item(0);
  EXPECT_FALSE(data.ViewTop().Visible());
  EXPECT_FALSE(data.ViewBottom().Visible());
  // Viridis through the user map, from its first stop (#440154).
  EXPECT_EQ(s.Contouring().ColorMapType(), orvColorMapUser);
  EXPECT_EQ(s.Contouring().UserColorMap().Item(0)->Color(), 0x540144u);
  std::map<std::string, QAction*> menu;
  for (const char* name :
       {"fillBands", "fillFlat", "fillSmooth", "projectionsNone", "projectionsBoth", "projectionsTop", "equalAspect", "base"}) {
    menu[name] = window.findChild<QAction*>(QString::fromLatin1(name));
    ASSERT_NE(menu[name], nullptr) << name;
  }
  EXPECT_TRUE(menu["fillBands"]->isChecked());
  menu["fillFlat"]->trigger();
  EXPECT_FALSE(s.Contouring().ExactBands());
  EXPECT_FALSE(s.Contouring().InterpolateColors());
  menu["fillSmooth"]->trigger();
  EXPECT_FALSE(s.Contouring().ExactBands());
  EXPECT_TRUE(s.Contouring().InterpolateColors());
  EXPECT_TRUE(menu["projectionsNone"]->isChecked());
  menu["projectionsBoth"]->trigger();
  EXPECT_TRUE(data.ViewTop().Visible());
  EXPECT_TRUE(data.ViewBottom().Visible());
  menu["projectionsTop"]->trigger();
  EXPECT_TRUE(data.ViewTop().Visible());
  EXPECT_FALSE(data.ViewBottom().Visible());
  // The hills' X and Y spans are alike: one scale for both, by the viewer's rule.
  EXPECT_TRUE(s.Axes().KeepXYAspectRatio());
  EXPECT_TRUE(menu["equalAspect"]->isChecked());
  menu["equalAspect"]->trigger();
  EXPECT_FALSE(s.Axes().KeepXYAspectRatio());
  EXPECT_FALSE(menu["base"]->isChecked());
  menu["base"]->trigger();
  EXPECT_TRUE(data.ViewMain().BaseVisible());
  // A change made elsewhere (the property pages, a State) shows in the menus.
  s.Contouring().SetInterpolateColors(false);
  s.Contouring().SetExactBands(true);
  EXPECT_TRUE(menu["fillBands"]->isChecked());
  EXPECT_FALSE(menu["fillSmooth"]->isChecked());
  s.Axes().SetKeepXYAspectRatio(true);
  EXPECT_TRUE(menu["equalAspect"]->isChecked());
  // A 2-D map has no cube faces to project on.
  window.setPlotType3D(false);
  EXPECT_FALSE(menu["projectionsTop"]->isEnabled());
}

TEST_F(ViewerTest, SavedSettingsRestoreTheColourMapAndViewInANewViewer) {
  const QString settings = Path("look.state");
  {
    ViewerWindow first;
    ASSERT_TRUE(first.openFile(WriteHills("hills.xyz")));
    first.setColorMap(orvColorMapLandSeaDark);
    first.setPresetView(ViewerWindow::kBackUndersideView);
    first.setContourLevels(7);
    ASSERT_TRUE(first.saveSettings(settings));
  }
  ViewerWindow second;
  ASSERT_TRUE(second.openFile(WriteHills("other.xyz", 12)));
  ASSERT_TRUE(second.openSettings(settings));
  Surface& s = second.plot().surface();
  EXPECT_EQ(s.Contouring().ColorMapType(), orvColorMapLandSeaDark);
  EXPECT_EQ(s.RotationX(), 120);
  EXPECT_EQ(s.RotationZ(), 210);
  EXPECT_EQ(s.Contouring().AutoSetIntervalCount(), 7);
  // The toolbar follows the control.
  auto* box = second.findChild<QComboBox*>(QStringLiteral("colorMapBox"));
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->currentData().toInt(), orvColorMapLandSeaDark);
  EXPECT_EQ(second.findChild<QSpinBox*>(QStringLiteral("levelsBox"))->value(), 7);
  // The data stayed the second viewer's own.
  EXPECT_EQ(second.dataFile()->points.x.size(), 144U);
}

TEST_F(ViewerTest, CancellingAResamplingRunPutsThePreviousResamplerAndPictureBack) {
  ViewerWindow window;
  ASSERT_TRUE(window.openFile(WriteHills("hills.xyz", 40)));
  DataSet& data = window.plot().surface().DataSets().Item(0);
  const std::vector<double> before = data.MeshTriangles();
  // The first report opens the progress dialog; cancel it then, as a person would.
  int reports = 0;
  QObject::connect(&window.plot(), &qt::SurfaceWidget::progress, &window, [&window, &reports] {
    ++reports;
    if (auto* dialog = window.findChild<QProgressDialog*>(QStringLiteral("progressDialog"))) dialog->cancel();
  });
  window.setResampler(orvResamplerTypeKriging);
  EXPECT_GE(reports, 2);
  EXPECT_EQ(data.Resampling().ResamplerType(), orvResamplerTypeNone);
  EXPECT_EQ(data.MeshTriangles(), before);
  EXPECT_TRUE(window.lastError().isEmpty()) << window.lastError().toStdString();
  const auto* dialog = window.findChild<QProgressDialog*>(QStringLiteral("progressDialog"));
  EXPECT_TRUE(dialog == nullptr || !dialog->isVisible());
}

TEST_F(ViewerTest, AResamplerThatRunsToTheEndGivesItsGridAndAGridFileSwitchesItOff) {
  ViewerWindow window;
  ASSERT_TRUE(window.openFile(WriteHills("hills.xyz", 12)));
  window.setResampler(orvResamplerTypeInverseDistance);
  DataSet& data = window.plot().surface().DataSets().Item(0);
  EXPECT_EQ(data.Resampling().ResamplerType(), orvResamplerTypeInverseDistance);
  const int side = data.Resampling().IntervalCount();
  EXPECT_EQ(data.MeshTriangles().size(), static_cast<std::size_t>(side * side * 2 * 9));
  EXPECT_TRUE(window.findChild<QLabel*>(QStringLiteral("dataLabel"))->text().contains(QStringLiteral("resampled")));

  ASSERT_TRUE(window.openFile(Write("g.grd", "DSAA\n3 3\n0 2\n0 2\n0 4\n0 1 2\n1 2 3\n2 3 4\n")));
  EXPECT_EQ(data.Resampling().ResamplerType(), orvResamplerTypeNone);
  EXPECT_EQ(data.MeshTriangles().size(), 8U * 9U);
}

TEST_F(ViewerTest, TheStatusBarShowsTheValueUnderThePointerInTheAxesFormat) {
  ViewerWindow window;
  window.resize(900, 700);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  ASSERT_TRUE(window.openFile(WriteHills("hills.xyz")));
  window.setPlotType3D(false);  // a flat map: the middle of the plot is data
  window.setCursorTracking(true);
  QApplication::processEvents();
  qt::SurfaceWidget& plot = window.plot();
  // Moves as the window system delivers them with no button held.
  for (const QPoint at : {plot.rect().center(), plot.rect().center() + QPoint(3, 2)}) {
    QMouseEvent move(QEvent::MouseMove, QPointF(at), plot.mapToGlobal(QPointF(at)), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&plot, &move);
  }
  const QString text = window.cursorText();
  // "X 0.050   Y -0.020   Z 0.13": two decimals more than each axis labels its ticks with.
  Axes& axes = plot.surface().Axes();
  QString pattern = QStringLiteral("^");
  for (const auto& [name, axis] : {std::pair{"X", &axes.XAxis()}, std::pair{"Y", &axes.YAxis()}, std::pair{"Z", &axes.ZAxis()}}) {
    const std::string& format = axis->LabelsFormat();
    const std::size_t point = format.find('.');
    const std::size_t decimals = (point == std::string::npos ? 0 : format.size() - point - 1) + 2;
    pattern += QStringLiteral("%1 -?\\d+\\.\\d{%2}").arg(QString::fromLatin1(name)).arg(decimals);
    if (std::string(name) != "Z") pattern += QStringLiteral("   ");
  }
  EXPECT_TRUE(QRegularExpression(pattern + QStringLiteral("$")).match(text).hasMatch())
      << text.toStdString() << " against " << pattern.toStdString();
  const Cursor& cursor = plot.surface().Cursor();
  EXPECT_NEAR(cursor.XValue(), 0.0, 0.6);
  EXPECT_NEAR(cursor.YValue(), 0.0, 0.6);

  window.setCursorTracking(false);
  EXPECT_TRUE(window.cursorText().isEmpty());
  EXPECT_FALSE(cursor.Visible());
}

TEST_F(ViewerTest, RecentFilesAndTheWindowsGeometryOutliveTheWindow) {
  {
    ViewerWindow first;
    first.resize(730, 510);
    first.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&first));
    first.close();
  }
  ViewerWindow window;
  EXPECT_EQ(window.size(), QSize(730, 510));
  const QString a = WriteHills("a.xyz", 5), b = WriteHills("b.xyz", 5);
  ASSERT_TRUE(window.openFile(a));
  ASSERT_TRUE(window.openFile(b));
  ASSERT_TRUE(window.openFile(a));
  const QStringList recent = window.recentFiles();
  ASSERT_GE(recent.size(), 2);
  EXPECT_EQ(recent[0], QFileInfo(a).absoluteFilePath());
  EXPECT_EQ(recent[1], QFileInfo(b).absoluteFilePath());
  EXPECT_EQ(recent.count(recent[0]), 1);
}

// The PNG of the asked size is the program's test below.
TEST_F(ViewerTest, ExportsRefuseAPngTooLargeAndMakeAOnePagePdf) {
  ViewerWindow window;
  ASSERT_TRUE(window.openFile(WriteHills("hills.xyz")));
  QString shown;
  CloseNextMessageBox(shown);
  EXPECT_FALSE(window.exportPng(Path("too-big.png"), QSize(20000, 10)));
  EXPECT_TRUE(shown.contains(QStringLiteral("1 to 16384"))) << shown.toStdString();

  ASSERT_TRUE(window.exportPdf(Path("plot.pdf")));
  QFile pdf(Path("plot.pdf"));
  ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
  const QByteArray bytes = pdf.readAll();
  EXPECT_TRUE(bytes.startsWith("%PDF"));
  EXPECT_EQ(bytes.count("/Type /Page\n") + bytes.count("/Type /Page\r"), 1);
}

TEST(ViewerParts, ColourMapPreviewsShowTheMapsBandsFromLowToHigh) {
  const QImage rainbow = ColorMapPreview(orvColorMapRainbow, QSize(50, 10));
  Contouring contouring;
  contouring.SetAutoSetContoursType(orvAutoSetByIntervalCount);
  contouring.SetAutoSetIntervalCount(24);
  contouring.SetColorMapType(orvColorMapRainbow);
  contouring.AutoSetContours(0.0, 1.0);
  const auto rgb = [](Color c) {
    const ColorBytes b = SplitColor(c);
    return qRgb(b.red, b.green, b.blue);
  };
  EXPECT_EQ(rainbow.pixel(1, 5), rgb(contouring.FindColor(0.5 / 48.0, false)));
  EXPECT_EQ(rainbow.pixel(48, 5), rgb(contouring.FindColor(47.5 / 48.0, false)));
  EXPECT_NE(rainbow.pixel(1, 5), rainbow.pixel(48, 5));
  EXPECT_EQ(rainbow.pixel(0, 0), qRgb(96, 96, 96));  // the frame
  EXPECT_NE(ColorMapPreview(orvColorMapRedBlue, QSize(50, 10)).pixel(1, 5), rainbow.pixel(1, 5));
}

TEST(ViewerParts, TheExportSizeKeepsItsProportionsUnlessAskedNotTo) {
  ExportDialog dialog(QSize(800, 600));
  auto* width = dialog.findChild<QSpinBox*>(QStringLiteral("width"));
  auto* height = dialog.findChild<QSpinBox*>(QStringLiteral("height"));
  width->setValue(1600);
  EXPECT_EQ(dialog.size(), QSize(1600, 1200));
  height->setValue(30000);  // clamped to the largest picture
  EXPECT_EQ(height->value(), 16384);
}

TEST_F(ViewerTest, TheResamplingDialogBlanksNaturalNeighbourAndFitsKrigingToTheData) {
  ResamplingDialog dialog(ResamplingSettings{});
  auto* method = dialog.findChild<QComboBox*>(QStringLiteral("method"));
  auto* blank = dialog.findChild<QCheckBox*>(QStringLiteral("blankOutsideHull"));
  ASSERT_NE(method, nullptr);
  ASSERT_NE(blank, nullptr);
  method->setCurrentIndex(3);
  EXPECT_TRUE(dialog.settings().blankOutsideHull);
  method->setCurrentIndex(1);  // inverse distance extrapolates by default
  EXPECT_FALSE(dialog.settings().blankOutsideHull);
  blank->click();  // the user's choice stays whatever the method
  method->setCurrentIndex(2);
  EXPECT_TRUE(dialog.settings().blankOutsideHull);
  DataSet data;
  dialog.settings().ApplyTo(data.Resampling());
  EXPECT_TRUE(data.Resampling().BlankOutsideHull());

  // "Fit to data" fills the kriging page with the fitter's model; without one it is off.
  EXPECT_FALSE(dialog.findChild<QPushButton*>(QStringLiteral("fitToData"))->isEnabled());
  ResamplingDialog fitted(ResamplingSettings{}, nullptr,
                          [] { return std::optional<VariogramModel>(VariogramModel{2, 10.0, 90.0, 450.0, 0.0}); });
  fitted.findChild<QComboBox*>(QStringLiteral("method"))->setCurrentIndex(2);  // kriging
  fitted.findChild<QPushButton*>(QStringLiteral("fitToData"))->click();
  const ResamplingSettings s = fitted.settings();
  EXPECT_EQ(s.model, 2);
  EXPECT_FALSE(s.autoRange);
  EXPECT_EQ(s.nugget, 10.0);
  EXPECT_EQ(s.sill, 100.0);
  EXPECT_EQ(s.range, 450.0);
}

// --- The program, as a script runs it ---------------------------------------------------

struct ProgramRun {
  int status = -1;
  QString errors;
  QString output;
};

ProgramRun RunViewer(const QStringList& arguments, bool display = true) {
  QProcess process;
  if (!display) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) environment.remove(QString::fromLatin1(name));
    process.setProcessEnvironment(environment);
  }
  process.start(QStringLiteral(ORVANE_VIEWER_PATH), arguments);
  ProgramRun run;
  if (!process.waitForFinished(120000)) return run;
  run.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
  run.errors = QString::fromLocal8Bit(process.readAllStandardError());
  run.output = QString::fromLocal8Bit(process.readAllStandardOutput());
  return run;
}

TEST_F(ViewerTest, HelpVersionAndBadOptionsNeedNoDisplay) {
  const ProgramRun help = RunViewer({QStringLiteral("--help")}, false);
  EXPECT_EQ(help.status, 0);
  EXPECT_TRUE(help.output.startsWith(QStringLiteral("Usage: "))) << help.output.toStdString();
  const ProgramRun version = RunViewer({QStringLiteral("--version")}, false);
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, QStringLiteral("orvane-viewer " ORVANE_VERSION "\n"));
  const ProgramRun bad = RunViewer({QStringLiteral("--bogus")}, false);
  EXPECT_EQ(bad.status, 1);
  EXPECT_TRUE(bad.errors.startsWith(QStringLiteral("orvane-viewer: Unknown option 'bogus'."))) << bad.errors.toStdString();
  // The window itself needs one, and says so instead of aborting.
  const ProgramRun window = RunViewer({}, false);
  EXPECT_EQ(window.status, 2);
  EXPECT_TRUE(window.errors.startsWith(QStringLiteral("orvane-viewer: there is no display"))) << window.errors.toStdString();
}

TEST_F(ViewerTest, TheProgramExportsAFileGivenOnItsCommandLineWithoutAWindow) {
  const QString out = Path("out.png");
  const ProgramRun run = RunViewer({WriteHills("hills.xyz"), QStringLiteral("--export"), out, QStringLiteral("--size"),
                             QStringLiteral("640x480"), QStringLiteral("--quit")});
  EXPECT_EQ(run.status, 0) << run.errors.toStdString();
  const QImage image(out);
  EXPECT_EQ(image.size(), QSize(640, 480));
  EXPECT_GT(ColouredPixels(image), 10000);

  const ProgramRun bad = RunViewer({Write("bad.xyz", "1 2 3\n4 5\n"), QStringLiteral("--export"), Path("never.png"),
                             QStringLiteral("--quit")});
  EXPECT_EQ(bad.status, 1);
  EXPECT_TRUE(bad.errors.contains(QStringLiteral("bad.xyz:2:"))) << bad.errors.toStdString();
  EXPECT_FALSE(QFile::exists(Path("never.png")));

  // --export writes what its extension names, PNG or PDF, and refuses the others by name.
  const QString pdf = Path("out.pdf");
  EXPECT_EQ(RunViewer({QStringLiteral("--export"), pdf, QStringLiteral("--quit")}).status, 0);
  QFile written(pdf);
  ASSERT_TRUE(written.open(QIODevice::ReadOnly));
  EXPECT_EQ(written.read(5), QByteArray("%PDF-"));
  const ProgramRun jpg = RunViewer({QStringLiteral("--export"), Path("out.jpg"), QStringLiteral("--quit")});
  EXPECT_EQ(jpg.status, 2);
  EXPECT_TRUE(jpg.errors.endsWith(QStringLiteral("orvane-viewer: ") + Path("out.jpg") +
                                  QStringLiteral(": cannot export .jpg files; the viewer exports .png and .pdf\n")))
      << jpg.errors.toStdString();
  EXPECT_FALSE(QFile::exists(Path("out.jpg")));

  // A grid with blank cells (what natural neighbour leaves beyond the data) opens and draws.
  const QString holed = Write("holed.grd", "DSAA\n3 3\n0 2\n0 2\n1 9\n1 2 3\n4 1.70141e38 6\n7 8 9\n");
  const QString map = Path("holed.png");
  const ProgramRun blanks = RunViewer({holed, QStringLiteral("--export"), map, QStringLiteral("--quit")});
  EXPECT_EQ(blanks.status, 0) << blanks.errors.toStdString();
  EXPECT_GT(ColouredPixels(QImage(map)), 1000);

  const ProgramRun badSize = RunViewer({QStringLiteral("--size"), QStringLiteral("0x10"), QStringLiteral("--quit")});
  EXPECT_EQ(badSize.status, 2);
  EXPECT_TRUE(badSize.errors.contains(QStringLiteral("--size must be"))) << badSize.errors.toStdString();
}

}  // namespace
}  // namespace orvane::viewer
