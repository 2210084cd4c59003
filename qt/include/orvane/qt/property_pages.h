#pragma once

#include <QDialog>
#include <QString>

#include <memory>

namespace orvane {
class Surface;
}

namespace orvane::qt {

/// The control's property pages: a tree of pages (Surface; Axes with Axis X, Y, Z;
/// Contouring; Faces with Face XY, XZ, YZ; View with Main, Top and Bottom per data set;
/// Resampling per data set) beside the page shown, with OK, Cancel and Apply. Edits wait
/// until Apply or OK, which let each edited property on the control; a refused value shows
/// its error in the dialog and goes back to the old value. Cancel puts the control back
/// as it was when the dialog opened.
class PropertyPagesDialog : public QDialog {
  Q_OBJECT

 public:
  /// Pages for surface, which must outlive the dialog; the first page is shown.
  explicit PropertyPagesDialog(orvane::Surface& surface, QWidget* parent = nullptr);
  ~PropertyPagesDialog() override;
  PropertyPagesDialog(const PropertyPagesDialog&) = delete;
  PropertyPagesDialog& operator=(const PropertyPagesDialog&) = delete;

  /// Shows the page at a tree path ("Axes/Axis X", "View/Data set 2/Top") or the first
  /// node of that name ("Contouring", "Axis Y"), ignoring case; false when there is none.
  bool showPage(const QString& pathOrName);
  /// The tree path of the node selected.
  QString currentPage() const;
  /// Lets every edited property on the control, then refreshes it; the pages then show
  /// the control's values. False when a value was refused (its error is shown).
  bool apply();
  /// The errors of the last apply, one per line; empty when everything was taken.
  QString errorText() const;

 public Q_SLOTS:
  /// Apply, then close unless a value was refused.
  void accept() override;
  /// Puts the control back as it was when the dialog opened (when anything was applied)
  /// and closes.
  void reject() override;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace orvane::qt
