#include "viewer_window.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QSaveFile>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>

#include <algorithm>
#include <initializer_list>
#include <tuple>
#include <iostream>
#include <utility>

#include "color_map_icons.h"
#include "control/fitting_zoom.h"
#include "core/flag_scope.h"
#include "export_dialog.h"
#include "orvane/axes/axes.h"
#include "orvane/core/format.h"
#include "orvane/axes/axis.h"
#include "orvane/contour/color_tables.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/host_defaults.h"
#include "orvane/control/surface.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_sets.h"
#include "orvane/qt/painter_dc.h"
#include "orvane/qt/print.h"
#include "orvane/qt/surface_widget.h"
#include "orvane/render/caption.h"
#include "orvane/render/cursor.h"
#include "orvane/render/legend.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"
#include "orvane/resample/resampling.h"
#include "orvane/resample/variogram.h"
#include "resampling_dialog.h"

namespace orvane::viewer {

namespace {

constexpr int kMostRecentFiles = 8;
// The control's key codes of the preset views, in PresetView order.
constexpr std::int16_t kPresetKeys[4] = {36, 35, 33, 34};
// The resampling grid's intervals of a new control, and the viewer's choice for points.
constexpr std::int32_t kControlIntervals = 10;
constexpr std::int32_t kViewerIntervals = 60;
// Files larger than this are not read into memory as settings.
constexpr qint64 kMostSettingsBytes = qint64{1} << 30;

QString FromStd(const std::string& text) { return QString::fromStdString(text); }

QString DescribeError(const std::exception& e) {
  if (const auto* error = dynamic_cast<const orvane::Error*>(&e)) return FromStd(error->Description());
  return QString::fromUtf8(e.what());
}

}  // namespace

void ViewerWindow::fitZoom(Surface& surface, QSize size) {
  if (size.width() < 1 || size.height() < 1) return;
  const detail::FlagScope fitting(fitting_);
  surface.SetZoom(detail::FittingZoom(surface, size.width(), size.height()));
  autoFit_ = true;
}

void ViewerWindow::fitPlot() {
  change(tr("The zoom"), [this] { fitZoom(plot_->surface(), plot_->plotPixelSize()); });
}

const std::vector<std::pair<std::int32_t, QString>>& ViewerWindow::ColorMapNames() {
  static const std::vector<std::pair<std::int32_t, QString>> names{
      {orvColorMapRainbow, QObject::tr("Rainbow")},
      {orvColorMapRainbowReverse, QObject::tr("Rainbow Reversed")},
      {orvColorMapRainbowStriped, QObject::tr("Rainbow Striped")},
      {orvColorMapBlueRed, QObject::tr("Blue to Red")},
      {orvColorMapRedBlue, QObject::tr("Red to Blue")},
      {orvColorMapLandSeaDark, QObject::tr("Land and Sea, Dark")},
      {orvColorMapLandSeaLight, QObject::tr("Land and Sea, Light")},
      {orvColorMapZebraStriped, QObject::tr("Zebra Striped")},
  };
  return names;
}

ViewerWindow::ViewerWindow(QWidget* parent) : QMainWindow(parent) {
  setObjectName(QStringLiteral("orvaneViewer"));
  setWindowTitle(tr("Orvane Viewer"));
  setAcceptDrops(true);

  plot_ = new orvane::qt::SurfaceWidget(this);
  plot_->setObjectName(QStringLiteral("plot"));
  plot_->setMouseTracking(true);
  plot_->installEventFilter(this);
  setCentralWidget(plot_);
  TakeHostDefaults(plot_->surface());
  connect(plot_, &orvane::qt::SurfaceWidget::progress, this, &ViewerWindow::onProgress);
  connect(plot_, &orvane::qt::SurfaceWidget::mouseMove, this, &ViewerWindow::onMouseMove);
  connect(plot_, &orvane::qt::SurfaceWidget::errorOccurred, this, &ViewerWindow::onControlError);
  // Anything changed from the keyboard, the mouse or the property pages shows in the menus.
  connect(plot_, &orvane::qt::SurfaceWidget::propertyChanged, this, [this](const QString& key) {
    // A zoom from the keyboard or the property pages is the user's: it stays as it is.
    if (key == QStringLiteral("Zoom") && !fitting_) autoFit_ = false;
    syncControls();
  });

  Cursor& cursor = plot_->surface().Cursor();
  connections_.push_back(cursor.PropertyChanged.Connect([this](const std::string& name) {
    if (name == "XValue" || name == "YValue" || name == "ZValue") cursorMoved_ = true;
  }));

  buildActions();
  buildMenus();
  buildToolBar();

  dataLabel_ = new QLabel(this);
  dataLabel_->setObjectName(QStringLiteral("dataLabel"));
  cursorLabel_ = new QLabel(this);
  cursorLabel_->setObjectName(QStringLiteral("cursorLabel"));
  cursorLabel_->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("X -0000.00   Y -0000.00   Z -0000.00")));
  statusBar()->addWidget(dataLabel_, 1);
  statusBar()->addPermanentWidget(cursorLabel_);

  QSettings settings;
  lastDirectory_ = settings.value(QStringLiteral("lastDirectory")).toString();
  if (!restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray())) resize(1000, 720);
  restoreState(settings.value(QStringLiteral("windowState")).toByteArray());
  rebuildRecentMenu();
  syncControls();
}

ViewerWindow::~ViewerWindow() = default;

// --- Building the window ----------------------------------------------------------------

void ViewerWindow::buildActions() {
  const auto make = [this](const QString& text, const QString& name, const QKeySequence& keys = {}) {
    auto* action = new QAction(text, this);
    action->setObjectName(name);
    if (!keys.isEmpty()) action->setShortcut(keys);
    return action;
  };
  openAction_ = make(tr("&Open Data..."), QStringLiteral("open"), QKeySequence::Open);
  openAction_->setIcon(style()->standardIcon(QStyle::SP_DialogOpenButton));
  openAction_->setToolTip(tr("Open an XYZ point file or a DSAA grid"));
  connect(openAction_, &QAction::triggered, this, &ViewerWindow::chooseFile);
  exportPngAction_ = make(tr("Export &PNG..."), QStringLiteral("exportPng"), QKeySequence(tr("Ctrl+E")));
  exportPngAction_->setIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));
  exportPngAction_->setToolTip(tr("Save the plot as a PNG image of a chosen size"));
  connect(exportPngAction_, &QAction::triggered, this, &ViewerWindow::chooseExportPng);
  exportPdfAction_ = make(tr("Export P&DF..."), QStringLiteral("exportPdf"));
  connect(exportPdfAction_, &QAction::triggered, this, &ViewerWindow::chooseExportPdf);
  printAction_ = make(tr("&Print..."), QStringLiteral("print"), QKeySequence::Print);
  connect(printAction_, &QAction::triggered, this, &ViewerWindow::print);
  copyAction_ = make(tr("&Copy Picture"), QStringLiteral("copy"), QKeySequence::Copy);
  copyAction_->setToolTip(tr("Put the plot on the clipboard"));
  connect(copyAction_, &QAction::triggered, this, &ViewerWindow::copy);
  propertiesAction_ = make(tr("P&roperties..."), QStringLiteral("properties"), QKeySequence(tr("Alt+Return")));
  propertiesAction_->setIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
  propertiesAction_->setToolTip(tr("Edit every property of the plot"));
  connect(propertiesAction_, &QAction::triggered, this, &ViewerWindow::showProperties);

  auto* plotTypes = new QActionGroup(this);
  plot3DAction_ = make(tr("&3-D Surface"), QStringLiteral("plot3D"), QKeySequence(tr("Ctrl+3")));
  plot2DAction_ = make(tr("&2-D Contour Map"), QStringLiteral("plot2D"), QKeySequence(tr("Ctrl+2")));
  plot3DAction_->setIconText(tr("3-D"));
  plot2DAction_->setIconText(tr("2-D"));
  for (QAction* action : {plot3DAction_, plot2DAction_}) {
    action->setCheckable(true);
    plotTypes->addAction(action);
  }
  connect(plot3DAction_, &QAction::triggered, this, [this] { setPlotType3D(true); });
  connect(plot2DAction_, &QAction::triggered, this, [this] { setPlotType3D(false); });

  const auto toggle = [this, &make](const QString& text, const QString& name, auto apply) {
    QAction* action = make(text, name);
    action->setCheckable(true);
    connect(action, &QAction::toggled, this, [this, apply](bool on) {
      if (!syncing_) change(tr("The change"), [this, apply, on] { apply(plot_->surface(), on); });
    });
    return action;
  };
  lightingAction_ = toggle(tr("&Lighting"), QStringLiteral("lighting"),
                           [](Surface& s, bool on) { s.SetLightingOn(on); });
  baseAction_ = toggle(tr("Solid &Base"), QStringLiteral("base"),
                       [](Surface& s, bool on) { s.DataSets().Item(0).ViewMain().SetBaseVisible(on); });
  baseAction_->setToolTip(tr("Stand the surface on a solid block down to the cube's floor"));
  meshAction_ = toggle(tr("&Mesh"), QStringLiteral("mesh"),
                       [](Surface& s, bool on) { s.DataSets().Item(0).ViewMain().SetMeshVisible(on); });
  markersAction_ = toggle(tr("Data Mar&kers"), QStringLiteral("markers"), [](Surface& s, bool on) {
    s.DataSets().Item(0).ViewMain().DataMarkersMaster().SetVisible(on);
  });
  aspectAction_ = toggle(tr("E&qual Aspect"), QStringLiteral("equalAspect"),
                         [](Surface& s, bool on) { s.Axes().SetKeepXYAspectRatio(on); });
  aspectAction_->setToolTip(tr("One unit as long on X as on Y"));
  connect(aspectAction_, &QAction::toggled, this, [this] {
    if (!syncing_ && autoFit_) fitPlot();  // the cube changed its shape
  });
  legendAction_ = toggle(tr("L&egend"), QStringLiteral("legend"), [](Surface& s, bool on) { s.Legend().SetVisible(on); });
  linesAction_ = toggle(tr("Contour &Lines"), QStringLiteral("contourLines"),
                        [](Surface& s, bool on) { s.DataSets().Item(0).ViewMain().SetContourLinesVisible(on); });
  labelsAction_ = toggle(tr("Contour La&bels"), QStringLiteral("contourLabels"),
                         [](Surface& s, bool on) { s.DataSets().Item(0).ViewMain().SetContourLabelsVisible(on); });
  captionAction_ = make(tr("&Caption..."), QStringLiteral("caption"));
  connect(captionAction_, &QAction::triggered, this, &ViewerWindow::editCaption);
  cursorAction_ = make(tr("&Track Pointer"), QStringLiteral("trackPointer"), QKeySequence(tr("Ctrl+T")));
  cursorAction_->setCheckable(true);
  cursorAction_->setToolTip(tr("Let the cursor follow the pointer and show its value in the status bar"));
  connect(cursorAction_, &QAction::toggled, this, [this](bool on) {
    if (!syncing_) setCursorTracking(on);
  });

  fitAction_ = make(tr("&Fit to Window"), QStringLiteral("fit"), QKeySequence(tr("Ctrl+0")));
  connect(fitAction_, &QAction::triggered, this, &ViewerWindow::fitPlot);

  const QString presetNames[4] = {tr("&Front View"), tr("&Back View"), tr("&Underside View"),
                                  tr("Underside &Back View")};
  const QString presetIconTexts[4] = {tr("Front"), tr("Back"), tr("Under"), tr("Under Back")};
  const QKeySequence presetKeys[4] = {QKeySequence(Qt::Key_Home), QKeySequence(Qt::Key_End),
                                      QKeySequence(Qt::Key_PageUp), QKeySequence(Qt::Key_PageDown)};
  for (int k = 0; k < 4; ++k) {
    presetActions_[k] = make(presetNames[k], QStringLiteral("preset%1").arg(k));
    presetActions_[k]->setIconText(presetIconTexts[k]);
    presetActions_[k]->setToolTip(tr("%1 (%2)").arg(presetNames[k]).arg(presetKeys[k].toString()).remove('&'));
    connect(presetActions_[k], &QAction::triggered, this, [this, k] { setPresetView(static_cast<PresetView>(k)); });
  }

  colorMapGroup_ = new QActionGroup(this);
  for (const auto& [type, name] : ColorMapNames()) {
    QAction* action = make(name, QStringLiteral("colorMap%1").arg(type));
    action->setCheckable(true);
    action->setData(type);
    action->setIcon(ColorMapIcon(type));
    colorMapGroup_->addAction(action);
  }
  connect(colorMapGroup_, &QActionGroup::triggered, this,
          [this](QAction* action) { setColorMap(action->data().toInt()); });

  // A group of checkable choices: menu text, object name and the choice's number each.
  const auto choices = [this, &make](std::initializer_list<std::tuple<QString, QString, int>> items) {
    auto* group = new QActionGroup(this);
    for (const auto& [text, name, value] : items) {
      QAction* action = make(text, name);
      action->setCheckable(true);
      action->setData(value);
      group->addAction(action);
    }
    return group;
  };
  fillGroup_ = choices({{tr("&Exact Bands"), QStringLiteral("fillBands"), static_cast<int>(Fill::kBands)},
                        {tr("&Flat Triangles"), QStringLiteral("fillFlat"), static_cast<int>(Fill::kFlat)},
                        {tr("&Smooth Colours"), QStringLiteral("fillSmooth"), static_cast<int>(Fill::kSmooth)}});
  connect(fillGroup_, &QActionGroup::triggered, this,
          [this](QAction* action) { setFill(static_cast<Fill>(action->data().toInt())); });
  projectionsGroup_ =
      choices({{tr("&None"), QStringLiteral("projectionsNone"), static_cast<int>(Projections::kNone)},
               {tr("On the &Top Face"), QStringLiteral("projectionsTop"), static_cast<int>(Projections::kTop)},
               {tr("On the &Bottom Face"), QStringLiteral("projectionsBottom"), static_cast<int>(Projections::kBottom)},
               {tr("On B&oth Faces"), QStringLiteral("projectionsBoth"), static_cast<int>(Projections::kBoth)}});
  connect(projectionsGroup_, &QActionGroup::triggered, this,
          [this](QAction* action) { setProjections(static_cast<Projections>(action->data().toInt())); });

  resamplerGroup_ = new QActionGroup(this);
  const QString resamplerNames[4] = {tr("&None (Triangulate the Points)"), tr("&Inverse Distance"), tr("&Kriging"),
                                     tr("Natural &Neighbour")};
  for (int type = 0; type < 4; ++type) {
    QAction* action = make(resamplerNames[type], QStringLiteral("resampler%1").arg(type));
    action->setCheckable(true);
    action->setData(type);
    resamplerGroup_->addAction(action);
  }
  connect(resamplerGroup_, &QActionGroup::triggered, this,
          [this](QAction* action) { setResampler(action->data().toInt()); });
}

void ViewerWindow::buildMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  file->addAction(openAction_);
  recentMenu_ = file->addMenu(tr("Open &Recent"));
  recentMenu_->setObjectName(QStringLiteral("recentMenu"));
  file->addSeparator();
  file->addAction(tr("Open &Settings..."), this, &ViewerWindow::chooseSettingsToOpen);
  file->addAction(tr("Sa&ve Settings..."), QKeySequence::Save, this, &ViewerWindow::chooseSettingsToSave);
  file->addSeparator();
  file->addAction(exportPngAction_);
  file->addAction(exportPdfAction_);
  file->addAction(printAction_);
  file->addSeparator();
  file->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);

  QMenu* edit = menuBar()->addMenu(tr("&Edit"));
  edit->addAction(copyAction_);
  edit->addSeparator();
  edit->addAction(propertiesAction_);

  QMenu* view = menuBar()->addMenu(tr("&View"));
  view->addAction(plot3DAction_);
  view->addAction(plot2DAction_);
  view->addSeparator();
  for (QAction* preset : presetActions_) view->addAction(preset);
  view->addAction(fitAction_);
  view->addSeparator();
  view->addAction(lightingAction_);
  view->addMenu(tr("&Projections"))->addActions(projectionsGroup_->actions());
  view->addAction(aspectAction_);
  view->addAction(legendAction_);
  view->addAction(captionAction_);
  view->addSeparator();
  view->addAction(cursorAction_);

  QMenu* plot = menuBar()->addMenu(tr("&Plot"));
  colorMapMenu_ = plot->addMenu(tr("&Colour Map"));
  colorMapMenu_->addActions(colorMapGroup_->actions());
  plot->addMenu(tr("&Fill"))->addActions(fillGroup_->actions());
  plot->addAction(tr("Contour &Levels..."), this, [this] {
    bool ok = false;
    const int count = QInputDialog::getInt(this, tr("Contour Levels"), tr("Number of contour intervals:"),
                                           levelsBox_->value(), 1, 1000, 1, &ok);
    if (ok) setContourLevels(count);
  });
  plot->addSeparator();
  plot->addAction(linesAction_);
  plot->addAction(labelsAction_);
  plot->addAction(meshAction_);
  plot->addAction(baseAction_);
  plot->addAction(markersAction_);

  QMenu* resampling = menuBar()->addMenu(tr("&Resampling"));
  resampling->addActions(resamplerGroup_->actions());
  resampling->addSeparator();
  resampling->addAction(tr("&Options..."), this, &ViewerWindow::editResamplingOptions);

  QMenu* help = menuBar()->addMenu(tr("&Help"));
  help->addAction(tr("&Sample Data"), this, &ViewerWindow::showSample);
  help->addSeparator();
  help->addAction(tr("&About Orvane Viewer"), this, &ViewerWindow::about);
}

void ViewerWindow::buildToolBar() {
  QToolBar* bar = addToolBar(tr("Main"));
  bar->setObjectName(QStringLiteral("mainToolBar"));
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  bar->addAction(openAction_);
  bar->addAction(exportPngAction_);
  bar->addSeparator();
  bar->addAction(plot3DAction_);
  bar->addAction(plot2DAction_);
  bar->addSeparator();

  colorMapBox_ = new QComboBox(bar);
  colorMapBox_->setObjectName(QStringLiteral("colorMapBox"));
  colorMapBox_->setToolTip(tr("Colour map"));
  colorMapBox_->setIconSize(ColorMapIconSize());
  for (const auto& [type, name] : ColorMapNames()) colorMapBox_->addItem(ColorMapIcon(type), name, type);
  connect(colorMapBox_, &QComboBox::activated, this,
          [this](int index) { setColorMap(colorMapBox_->itemData(index).toInt()); });
  bar->addWidget(colorMapBox_);

  auto* levelsLabel = new QLabel(tr("  Levels "), bar);
  bar->addWidget(levelsLabel);
  levelsBox_ = new QSpinBox(bar);
  levelsBox_->setObjectName(QStringLiteral("levelsBox"));
  levelsBox_->setRange(1, 1000);
  levelsBox_->setToolTip(tr("Number of contour intervals"));
  levelsBox_->setKeyboardTracking(false);
  connect(levelsBox_, &QSpinBox::valueChanged, this, [this](int count) {
    if (!syncing_) setContourLevels(count);
  });
  bar->addWidget(levelsBox_);
  bar->addSeparator();
  bar->addAction(lightingAction_);
  auto* views = new QToolButton(bar);
  views->setObjectName(QStringLiteral("viewsButton"));
  views->setText(tr("Views"));
  views->setToolTip(tr("The preset views"));
  views->setPopupMode(QToolButton::InstantPopup);
  auto* viewsMenu = new QMenu(views);
  for (QAction* preset : presetActions_) viewsMenu->addAction(preset);
  viewsMenu->addSeparator();
  viewsMenu->addAction(fitAction_);
  views->setMenu(viewsMenu);
  bar->addWidget(views);
  bar->addSeparator();
  bar->addAction(propertiesAction_);
}

// --- Changing the control ---------------------------------------------------------------

template <class F>
bool ViewerWindow::change(const QString& what, F&& call, bool refresh) {
  cancelled_ = false;
  bool done = false;
  try {
    std::forward<F>(call)();
    // The control redraws when asked: one refresh after all of a change's values are set,
    // so a resampler runs once.
    if (refresh) plot_->surface().Refresh();
    done = true;
  } catch (const std::exception& e) {
    finishProgress();
    if (!cancelled_) reportError(tr("Orvane Viewer"), what + tr(" could not be made:\n\n") + DescribeError(e));
  }
  finishProgress();
  syncControls();
  return done;
}

void ViewerWindow::onProgress(double fraction) {
  if (progress_ == nullptr) {
    if (fraction >= 1.0) return;
    progress_ = new QProgressDialog(tr("Resampling the data..."), tr("Cancel"), 0, 1000, this);
    progress_->setObjectName(QStringLiteral("progressDialog"));
    progress_->setWindowTitle(tr("Orvane Viewer"));
    progress_->setWindowModality(Qt::WindowModal);
    progress_->setMinimumDuration(400);
    progress_->setAutoReset(false);
    progress_->setAutoClose(false);
  }
  // A modal progress dialog handles its own events as it is updated, Cancel included.
  progress_->setValue(static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 1000.0));
  if (progress_ != nullptr && progress_->wasCanceled()) {
    cancelled_ = true;
    plot_->requestStop();
  }
}

void ViewerWindow::finishProgress() {
  if (progress_ == nullptr) return;
  progress_->close();
  progress_->deleteLater();
  progress_ = nullptr;
}

void ViewerWindow::onControlError(const QString& message) {
  finishProgress();
  if (!cancelled_) statusBar()->showMessage(message, 8000);
}

void ViewerWindow::syncControls() {
  if (syncing_) return;
  syncing_ = true;
  Surface& s = plot_->surface();
  DataSet& dataSet = s.DataSets().Item(0);
  const bool is3D = s.PlotType() == orvPlotType3D;
  plot3DAction_->setChecked(is3D);
  plot2DAction_->setChecked(!is3D);
  for (QAction* preset : presetActions_) preset->setEnabled(is3D);
  lightingAction_->setChecked(s.LightingOn());
  meshAction_->setChecked(dataSet.ViewMain().MeshVisible());
  baseAction_->setChecked(dataSet.ViewMain().BaseVisible());
  markersAction_->setChecked(dataSet.ViewMain().DataMarkersMaster().Visible());
  legendAction_->setChecked(s.Legend().Visible());
  aspectAction_->setChecked(s.Axes().KeepXYAspectRatio());
  linesAction_->setChecked(dataSet.ViewMain().ContourLinesVisible());
  labelsAction_->setChecked(dataSet.ViewMain().ContourLabelsVisible());
  cursorAction_->setChecked(s.Cursor().Visible() && s.Cursor().Mode() == orvCursorModeTrackMouse);
  const Fill fill = s.Contouring().InterpolateColors() ? Fill::kSmooth
                    : s.Contouring().ExactBands()       ? Fill::kBands
                                                        : Fill::kFlat;
  for (QAction* action : fillGroup_->actions()) action->setChecked(action->data().toInt() == static_cast<int>(fill));
  const bool top = dataSet.ViewTop().Visible(), bottom = dataSet.ViewBottom().Visible();
  const Projections shown = top && bottom ? Projections::kBoth
                            : top         ? Projections::kTop
                            : bottom      ? Projections::kBottom
                                          : Projections::kNone;
  for (QAction* action : projectionsGroup_->actions()) {
    action->setChecked(action->data().toInt() == static_cast<int>(shown));
    action->setEnabled(is3D);
  }
  const std::int32_t map = s.Contouring().ColorMapType();
  for (QAction* action : colorMapGroup_->actions()) action->setChecked(action->data().toInt() == map);
  colorMapBox_->setCurrentIndex(colorMapBox_->findData(map));
  levelsBox_->setValue(s.Contouring().AutoSetIntervalCount());
  const std::int32_t resampler = dataSet.Resampling().ResamplerType();
  const bool points = data_.has_value() && !data_->isGrid;
  for (QAction* action : resamplerGroup_->actions()) {
    action->setChecked(action->data().toInt() == resampler);
    action->setEnabled(points);
  }
  const QString name = data_ ? QFileInfo(FromStd(data_->name)).fileName() : tr("Sample");
  setWindowTitle(tr("%1 - Orvane Viewer").arg(name));
  QString summary = data_ ? FromStd(data_->Summary()) : tr("Sample: 30 x 30 grid");
  if (resampler != orvResamplerTypeNone && points) {
    const int side = dataSet.Resampling().IntervalCount() + 1;
    summary += tr(", resampled to %1 x %2").arg(side).arg(side);
  }
  dataLabel_->setText(summary);
  syncing_ = false;
}

void ViewerWindow::reportError(const QString& title, const QString& message) {
  lastError_ = message;
  if (quiet_) {
    std::cerr << "orvane-viewer: " << message.toStdString() << '\n';
    return;
  }
  QMessageBox box(QMessageBox::Warning, title, message, QMessageBox::Ok, this);
  box.setObjectName(QStringLiteral("errorBox"));
  box.exec();
}

// --- Data and settings ------------------------------------------------------------------

bool ViewerWindow::openFile(const QString& path) {
  DataFile file;
  try {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    file = ReadDataFile(path.toStdString());
    QApplication::restoreOverrideCursor();
  } catch (const std::exception& e) {
    QApplication::restoreOverrideCursor();
    reportError(tr("Cannot Open Data"), tr("The file could not be opened:\n\n") + DescribeError(e));
    return false;
  }
  Surface& surface = plot_->surface();
  const bool shown = change(tr("The data"), [&] {
    // Resampled points get a grid fine enough to look smooth, unless one was chosen.
    Resampling& resampling = surface.DataSets().Item(0).Resampling();
    if (!file.isGrid && resampling.IntervalCount() == kControlIntervals) resampling.SetIntervalCount(kViewerIntervals);
    DataSet& target = surface.DataSets().Item(0);
    target.UserHullClear();  // a hull drawn for the data shown before would cut the new data
    ShowDataFile(file, target);
    surface.Header().SetText(QFileInfo(path).fileName().toStdString());
    surface.Header().SetVisible(true);
  });
  // A resampling of the new points stopped with Cancel: the points are drawn as they are.
  if (!shown && cancelled_) {
    change(tr("The data"), [&surface] { surface.DataSets().Item(0).Resampling().SetResamplerType(orvResamplerTypeNone); });
  }
  data_ = std::move(file);
  const std::string name = QFileInfo(path).fileName().toStdString();
  change(tr("The labels"), [&surface, &name] {
    FitLabelFormats(surface.Axes(), surface.Contouring());
    FitXYAspect(surface.Axes());
    // A map of the viewer's choosing gives way to terrain for elevations.
    if (surface.Contouring().ColorMapType() == orvColorMapUser) {
      LoadPerceptualColorMap(surface.Contouring().UserColorMap(), PerceptualColorMapFor(name));
      surface.Contouring().ApplyColorMap();
    }
  });
  fitPlot();
  addRecentFile(QFileInfo(path).absoluteFilePath());
  lastDirectory_ = QFileInfo(path).absolutePath();
  syncControls();
  if (data_->merged > 0) {
    statusBar()->showMessage(tr("%n duplicate point(s) merged into the mean Z of each place", nullptr,
                                static_cast<int>(data_->merged)), 8000);
  }
  return true;
}

void ViewerWindow::showSample() {
  data_.reset();
  change(tr("The sample"), [this] {
    plot_->surface().ShowSampleData();
    TakeHostDefaults(plot_->surface());
    fitZoom(plot_->surface(), plot_->plotPixelSize());
  });
  change(tr("The labels"), [this] { FitLabelFormats(plot_->surface().Axes(), plot_->surface().Contouring()); });
  syncControls();
}

bool ViewerWindow::saveSettings(const QString& path) {
  try {
    const std::vector<std::uint8_t> bytes = plot_->surface().State(orvStateTypeFormatting);
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) ||
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size())) !=
            static_cast<qint64>(bytes.size()) ||
        !out.commit()) {
      throw orvane::Error(5, "orvane-viewer", path.toStdString() + ": " + out.errorString().toStdString());
    }
  } catch (const std::exception& e) {
    reportError(tr("Cannot Save Settings"), tr("The settings could not be saved:\n\n") + DescribeError(e));
    return false;
  }
  statusBar()->showMessage(tr("Settings saved to %1").arg(QFileInfo(path).fileName()), 5000);
  return true;
}

bool ViewerWindow::openSettings(const QString& path) {
  QFile in(path);
  if (!in.open(QIODevice::ReadOnly)) {
    reportError(tr("Cannot Open Settings"), tr("%1: %2").arg(path, in.errorString()));
    return false;
  }
  if (in.size() > kMostSettingsBytes) {
    reportError(tr("Cannot Open Settings"), tr("%1: the file is too large to be saved settings.").arg(path));
    return false;
  }
  const QByteArray raw = in.readAll();
  const std::vector<std::uint8_t> bytes(raw.begin(), raw.end());
  // Setting a State redraws by itself.
  const bool applied =
      change(tr("The settings"), [&] { plot_->surface().SetState(bytes, orvStateTypeFormatting); }, false);
  if (applied) statusBar()->showMessage(tr("Settings read from %1").arg(QFileInfo(path).fileName()), 5000);
  return applied;
}

// --- Output -----------------------------------------------------------------------------

bool ViewerWindow::exportPng(const QString& path, QSize size) {
  try {
    if (size.width() < 1 || size.height() < 1 || size.width() > 16384 || size.height() > 16384) {
      throw orvane::Error(5, "orvane-viewer", "The picture must be from 1 to 16384 pixels on each side.");
    }
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull()) throw orvane::Error(7, "orvane-viewer", "There is not enough memory for the picture.");
    image.fill(Qt::white);
    Surface& surface = plot_->surface();
    // A plot fitted to the window is fitted to the picture, then to the window again.
    const double zoom = surface.Zoom();
    const bool fitted = autoFit_;
    const detail::FlagScope fitting(fitting_);
    if (fitted) surface.SetZoom(detail::FittingZoom(surface, size.width(), size.height()));
    try {
      QPainter painter(&image);
      orvane::qt::PainterDC dc(painter);
      surface.DrawToDC(dc, 0, 0, size.width(), size.height());
    } catch (...) {
      if (fitted) surface.SetZoom(zoom);
      throw;
    }
    if (fitted) surface.SetZoom(zoom);
    if (!image.save(path, "PNG")) {
      throw orvane::Error(5, "orvane-viewer", path.toStdString() + ": the picture could not be written.");
    }
  } catch (const std::exception& e) {
    reportError(tr("Cannot Export"), tr("The PNG file could not be made:\n\n") + DescribeError(e));
    return false;
  }
  statusBar()->showMessage(tr("Exported %1 (%2 x %3)").arg(QFileInfo(path).fileName()).arg(size.width()).arg(size.height()),
                           5000);
  return true;
}

bool ViewerWindow::exportPdf(const QString& path) {
  try {
    QPdfWriter writer(path);
    writer.setResolution(300);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageOrientation(QPageLayout::Landscape);
    writer.setTitle(windowTitle());
    writer.setCreator(QStringLiteral("Orvane Viewer"));
    orvane::qt::PrintSurface(plot_->surface(), writer);
  } catch (const std::exception& e) {
    reportError(tr("Cannot Export"), tr("The PDF file could not be made:\n\n") + DescribeError(e));
    return false;
  }
  statusBar()->showMessage(tr("Exported %1").arg(QFileInfo(path).fileName()), 5000);
  return true;
}

void ViewerWindow::print() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageOrientation(QPageLayout::Landscape);
  printer.setDocName(windowTitle());
  QPrintDialog dialog(&printer, this);
  if (dialog.exec() != QDialog::Accepted) return;
  try {
    orvane::qt::PrintSurface(plot_->surface(), printer);
  } catch (const std::exception& e) {
    reportError(tr("Cannot Print"), tr("The plot could not be printed:\n\n") + DescribeError(e));
  }
}

void ViewerWindow::copy() {
  if (plot_->surface().CopyToClipboard()) {
    statusBar()->showMessage(tr("The plot is on the clipboard"), 4000);
  } else {
    statusBar()->showMessage(tr("The plot could not be put on the clipboard"), 6000);
  }
}

void ViewerWindow::showProperties() {
  // The dialog redraws the plot as its changes are applied.
  change(tr("The change"), [this] { plot_->surface().ShowPropertyPages({}); }, false);
}

// --- Plot settings ----------------------------------------------------------------------

void ViewerWindow::setPlotType3D(bool on) {
  change(tr("The plot type"), [this, on] {
    plot_->surface().SetPlotType(on ? orvPlotType3D : orvPlotType2D);
    if (autoFit_) fitZoom(plot_->surface(), plot_->plotPixelSize());
  });
}

void ViewerWindow::setColorMap(std::int32_t type) {
  change(tr("The colour map"), [this, type] { plot_->surface().Contouring().SetColorMapType(type); });
}

void ViewerWindow::setFill(Fill fill) {
  change(tr("The fill"), [this, fill] {
    Contouring& contouring = plot_->surface().Contouring();
    contouring.SetInterpolateColors(fill == Fill::kSmooth);
    contouring.SetExactBands(fill == Fill::kBands);
  });
}

void ViewerWindow::setProjections(Projections projections) {
  change(tr("The projections"), [this, projections] {
    for (DataSet& set : plot_->surface().DataSets()) {
      set.ViewTop().SetVisible(projections == Projections::kTop || projections == Projections::kBoth);
      set.ViewBottom().SetVisible(projections == Projections::kBottom || projections == Projections::kBoth);
    }
  });
}

void ViewerWindow::setContourLevels(int count) {
  change(tr("The contour levels"), [this, count] {
    Contouring& contouring = plot_->surface().Contouring();
    contouring.SetAutoSetContoursType(orvAutoSetByIntervalCount);
    contouring.SetAutoSetIntervalCount(count);
  });
}

void ViewerWindow::setPresetView(PresetView view) {
  // A preset view puts the zoom back to 1; the plot is fitted to the window again.
  change(tr("The view"), [this, view] {
    plot_->surface().OnKeyDown(kPresetKeys[view], 0);
    fitZoom(plot_->surface(), plot_->plotPixelSize());
  });
  autoFit_ = true;
}

void ViewerWindow::setCursorTracking(bool on) {
  change(tr("The cursor"), [this, on] {
    Cursor& cursor = plot_->surface().Cursor();
    cursor.SetMode(orvCursorModeTrackMouse);
    cursor.SetVisible(on);
  });
  if (!on) cursorLabel_->clear();
}

void ViewerWindow::setResampler(std::int32_t type) {
  Resampling& resampling = plot_->surface().DataSets().Item(0).Resampling();
  const ResamplingSettings before = ResamplingSettings::Of(resampling);
  ResamplingSettings wanted = before;
  wanted.type = type;
  applyResampling(wanted, before);
}

void ViewerWindow::applyResampling(const ResamplingSettings& wanted, const ResamplingSettings& before) {
  Resampling& resampling = plot_->surface().DataSets().Item(0).Resampling();
  if (!change(tr("The resampling"), [&] { wanted.ApplyTo(resampling); })) {
    // Cancelled or refused: the previous settings and picture come back.
    const bool wasCancelled = cancelled_;
    change(tr("The resampling"), [&] { before.ApplyTo(resampling); });
    if (wasCancelled) statusBar()->showMessage(tr("Resampling cancelled"), 5000);
  }
}

void ViewerWindow::editResamplingOptions() {
  Resampling& resampling = plot_->surface().DataSets().Item(0).Resampling();
  const ResamplingSettings before = ResamplingSettings::Of(resampling);
  ResamplingDialog::Fitter fitter;
  if (data_ && !data_->isGrid) {
    // The variogram of at most 5,000 of the points, as the command takes it.
    fitter = [this]() -> std::optional<VariogramModel> {
      try {
        return BestVariogramModel(data_->points.x, data_->points.y, data_->points.z);
      } catch (const Error&) {
        return std::nullopt;
      }
    };
  }
  ResamplingDialog dialog(before, this, std::move(fitter));
  if (dialog.exec() == QDialog::Accepted) applyResampling(dialog.settings(), before);
}

void ViewerWindow::editCaption() {
  Caption& caption = plot_->surface().Header();
  bool ok = false;
  const QString text = QInputDialog::getText(this, tr("Caption"), tr("Caption text (empty for none):"),
                                             QLineEdit::Normal, FromStd(caption.Text()), &ok);
  if (!ok) return;
  change(tr("The caption"), [&caption, &text] {
    caption.SetText(text.toStdString());
    caption.SetVisible(!text.isEmpty());
  });
}

void ViewerWindow::about() {
  QMessageBox::about(this, tr("About Orvane Viewer"),
                     tr("<h3>Orvane Viewer %1</h3><p>Grids and plots XYZ data as 3-D surfaces and contour maps.</p>"
                        "<p>Drag with the left mouse button to turn the plot; the arrow keys rotate, "
                        "+ and - on the number pad zoom, Home, End, Page Up and Page Down select the preset views.</p>")
                         .arg(QApplication::applicationVersion()));
}

// --- The pointer ------------------------------------------------------------------------

void ViewerWindow::onMouseMove() {
  const Cursor& cursor = plot_->surface().Cursor();
  if (!cursor.Visible() || cursor.Mode() != orvCursorModeTrackMouse) return;
  if (!cursorMoved_) return;  // over the background: the last value stays until the pointer leaves
  cursorMoved_ = false;
  Axes& axes = plot_->surface().Axes();
  // A point between the ticks: two decimals more than the ticks' own fixed format.
  const auto text = [](const Axis& axis, double value) {
    const std::string& format = axis.LabelsFormat();
    const bool fixed = !format.empty() && format.find_first_not_of("0.") == std::string::npos;
    return FromStd(FormatNumber(value, fixed ? (format.find('.') == std::string::npos ? format + ".00" : format + "00")
                                             : format));
  };
  cursorLabel_->setText(tr("X %1   Y %2   Z %3")
                            .arg(text(axes.XAxis(), cursor.XValue()), text(axes.YAxis(), cursor.YValue()),
                                 text(axes.ZAxis(), cursor.ZValue())));
}

QString ViewerWindow::cursorText() const { return cursorLabel_->text(); }

bool ViewerWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == plot_ && event->type() == QEvent::Leave) cursorLabel_->clear();
  // The next paint draws at the new size: a fitted plot is fitted to it first.
  if (watched == plot_ && event->type() == QEvent::Resize && autoFit_) {
    try {
      fitZoom(plot_->surface(), plot_->plotPixelSize());
    } catch (const std::exception&) {
      // an unusable size: the zoom stays
    }
  }
  return QMainWindow::eventFilter(watched, event);
}

// --- Files ------------------------------------------------------------------------------

void ViewerWindow::chooseFile() {
  const QString path = QFileDialog::getOpenFileName(
      this, tr("Open Data"), lastDirectory_,
      tr("Data files (*.xyz *.txt *.csv *.dat *.grd);;XYZ points (*.xyz *.txt *.csv *.dat);;DSAA grids (*.grd);;All files (*)"));
  if (!path.isEmpty()) openFile(path);
}

void ViewerWindow::chooseSettingsToOpen() {
  const QString path = QFileDialog::getOpenFileName(this, tr("Open Settings"), lastDirectory_,
                                                    tr("Plot settings (*.state);;All files (*)"));
  if (!path.isEmpty()) openSettings(path);
}

void ViewerWindow::chooseSettingsToSave() {
  QString path = QFileDialog::getSaveFileName(this, tr("Save Settings"), lastDirectory_,
                                              tr("Plot settings (*.state)"));
  if (path.isEmpty()) return;
  if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".state");
  saveSettings(path);
}

void ViewerWindow::chooseExportPng() {
  ExportDialog dialog(plot_->plotPixelSize(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  QString path = QFileDialog::getSaveFileName(this, tr("Export PNG"), lastDirectory_, tr("PNG images (*.png)"));
  if (path.isEmpty()) return;
  if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".png");
  exportPng(path, dialog.size());
}

void ViewerWindow::chooseExportPdf() {
  QString path = QFileDialog::getSaveFileName(this, tr("Export PDF"), lastDirectory_, tr("PDF documents (*.pdf)"));
  if (path.isEmpty()) return;
  if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".pdf");
  exportPdf(path);
}

QStringList ViewerWindow::recentFiles() const {
  return QSettings().value(QStringLiteral("recentFiles")).toStringList();
}

void ViewerWindow::addRecentFile(const QString& path) {
  QStringList files = recentFiles();
  files.removeAll(path);
  files.prepend(path);
  while (files.size() > kMostRecentFiles) files.removeLast();
  QSettings().setValue(QStringLiteral("recentFiles"), files);
  rebuildRecentMenu();
}

void ViewerWindow::rebuildRecentMenu() {
  recentMenu_->clear();
  const QStringList files = recentFiles();
  for (int k = 0; k < files.size(); ++k) {
    const QString& path = files[k];
    QAction* action = recentMenu_->addAction(tr("&%1 %2").arg(k + 1).arg(QFileInfo(path).fileName()));
    action->setToolTip(path);
    action->setStatusTip(path);
    connect(action, &QAction::triggered, this, [this, path] { openFile(path); });
  }
  if (files.isEmpty()) recentMenu_->addAction(tr("(none)"))->setEnabled(false);
  recentMenu_->addSeparator();
  recentMenu_->addAction(tr("&Clear List"), this, [this] {
    QSettings().remove(QStringLiteral("recentFiles"));
    rebuildRecentMenu();
  });
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
  QSettings settings;
  settings.setValue(QStringLiteral("geometry"), saveGeometry());
  settings.setValue(QStringLiteral("windowState"), saveState());
  settings.setValue(QStringLiteral("lastDirectory"), lastDirectory_);
  event->accept();
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent* event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  if (!urls.isEmpty() && urls.front().isLocalFile()) event->acceptProposedAction();
}

void ViewerWindow::dropEvent(QDropEvent* event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  if (urls.isEmpty() || !urls.front().isLocalFile()) return;
  event->acceptProposedAction();
  openFile(urls.front().toLocalFile());
}

}  // namespace orvane::viewer
