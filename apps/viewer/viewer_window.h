#pragma once

// The viewer's main window: the plot in the middle, menus and a toolbar for what people
// change most, a status bar with the value under the pointer.

#include <QMainWindow>
#include <QSize>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/data/data_file.h"
#include "resampling_dialog.h"
#include "orvane/core/event.h"

class QAction;
class QActionGroup;
class QComboBox;
class QLabel;
class QMenu;
class QProgressDialog;
class QSpinBox;

namespace orvane {
class Surface;
}
namespace orvane::qt {
class SurfaceWidget;
}

namespace orvane::viewer {

class ViewerWindow : public QMainWindow {
  Q_OBJECT

 public:
  // The preset views, as the keyboard's Home, End, Page Up and Page Down give them.
  enum PresetView { kDefaultView, kBackView, kUndersideView, kBackUndersideView };

  explicit ViewerWindow(QWidget* parent = nullptr);
  ~ViewerWindow() override;
  ViewerWindow(const ViewerWindow&) = delete;
  ViewerWindow& operator=(const ViewerWindow&) = delete;

  orvane::qt::SurfaceWidget& plot() noexcept { return *plot_; }
  // The file shown, if any.
  const std::optional<DataFile>& dataFile() const noexcept { return data_; }

  // Reads and shows a data file. A file that cannot be shown leaves the plot as it was
  // and reports the error (a message box, or standard error when quiet); false then.
  bool openFile(const QString& path);
  // Shows the built-in sample data.
  void showSample();
  // Saves or applies the plot's formatting (the control's State bytes).
  bool saveSettings(const QString& path);
  bool openSettings(const QString& path);
  // Draws the plot afresh at the given size into a PNG file, or on a PDF page.
  bool exportPng(const QString& path, QSize size);
  bool exportPdf(const QString& path);

  void setPlotType3D(bool on);
  void setColorMap(std::int32_t type);
  // How the fill is coloured: flat (one colour a triangle), exact bands or smooth.
  enum class Fill { kFlat, kBands, kSmooth };
  void setFill(Fill fill);
  // Which of the map's copies on the cube's faces show: none, top, bottom or both.
  enum class Projections { kNone, kTop, kBottom, kBoth };
  void setProjections(Projections projections);
  void setContourLevels(int count);
  // Selects a resampler (orvResamplerType...). A run stopped with Cancel puts the
  // previous resampler back.
  void setResampler(std::int32_t type);
  void setPresetView(PresetView view);
  // Lets the cursor follow the mouse, with its position in the status bar.
  void setCursorTracking(bool on);

  // Errors go to standard error instead of message boxes (scripts, --quit).
  void setQuiet(bool quiet) noexcept { quiet_ = quiet; }
  // The text of the last error reported.
  const QString& lastError() const noexcept { return lastError_; }
  // The status bar's field with the pointer's X, Y and Z.
  QString cursorText() const;
  // Files opened lately, newest first.
  QStringList recentFiles() const;

  // The colour maps offered, in menu order, and a picture of each.
  static const std::vector<std::pair<std::int32_t, QString>>& ColorMapNames();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private Q_SLOTS:
  void chooseFile();
  void chooseSettingsToOpen();
  void chooseSettingsToSave();
  void chooseExportPng();
  void chooseExportPdf();
  void print();
  void copy();
  void showProperties();
  void editCaption();
  void editResamplingOptions();
  void about();
  void onProgress(double fraction);
  void onMouseMove();
  void onControlError(const QString& message);
  // Zooms the plot to fill the window, and keeps it filled as the window is resized.
  void fitPlot();

 private:
  void buildActions();
  void buildMenus();
  void buildToolBar();
  // Runs a change of the control; an orvane::Error is reported and false returned.
  // Resampling runs the change starts show a progress dialog; Cancel stops them and the
  // resampler's settings go back to what they were.
  template <class F>
  bool change(const QString& what, F&& call, bool refresh = true);
  // Applies resampling settings; when the run is cancelled or refused, before comes back.
  void applyResampling(const ResamplingSettings& wanted, const ResamplingSettings& before);
  void finishProgress();
  // Sets the zoom that fills a picture of the given size (the data's ranges as of the
  // last refresh).
  void fitZoom(Surface& surface, QSize size);
  // Brings the menus, toolbar and title in line with the control.
  void syncControls();
  void reportError(const QString& title, const QString& message);
  void addRecentFile(const QString& path);
  void rebuildRecentMenu();

  orvane::qt::SurfaceWidget* plot_ = nullptr;
  std::optional<DataFile> data_;
  bool quiet_ = false;
  bool syncing_ = false;        // menus being set from the control: no changes back
  bool cursorMoved_ = false;
  bool autoFit_ = true;         // the zoom follows the window until the user zooms
  bool fitting_ = false;        // the viewer is setting the zoom itself    // the cursor followed the pointer since the last move
  QString lastError_;
  QString lastDirectory_;
  std::vector<orvane::Connection> connections_;

  QProgressDialog* progress_ = nullptr;
  bool cancelled_ = false;

  QLabel* dataLabel_ = nullptr;
  QLabel* cursorLabel_ = nullptr;
  QComboBox* colorMapBox_ = nullptr;
  QSpinBox* levelsBox_ = nullptr;
  QMenu* recentMenu_ = nullptr;
  QMenu* colorMapMenu_ = nullptr;

  QAction* openAction_ = nullptr;
  QAction* exportPngAction_ = nullptr;
  QAction* exportPdfAction_ = nullptr;
  QAction* printAction_ = nullptr;
  QAction* copyAction_ = nullptr;
  QAction* propertiesAction_ = nullptr;
  QAction* plot3DAction_ = nullptr;
  QAction* plot2DAction_ = nullptr;
  QAction* lightingAction_ = nullptr;
  QAction* aspectAction_ = nullptr;
  QAction* baseAction_ = nullptr;
  QAction* meshAction_ = nullptr;
  QAction* markersAction_ = nullptr;
  QAction* legendAction_ = nullptr;
  QAction* captionAction_ = nullptr;
  QAction* linesAction_ = nullptr;
  QAction* labelsAction_ = nullptr;
  QAction* cursorAction_ = nullptr;
  QAction* presetActions_[4] = {};
  QAction* fitAction_ = nullptr;
  QActionGroup* colorMapGroup_ = nullptr;
  QActionGroup* resamplerGroup_ = nullptr;
  QActionGroup* fillGroup_ = nullptr;  // data: the Fill, as an int
  QActionGroup* projectionsGroup_ = nullptr;  // data: the Projections, as an int
};

}  // namespace orvane::viewer
