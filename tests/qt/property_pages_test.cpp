// The property pages, driven through their widgets: the tree, Apply / OK / Cancel against
// the control's State, refused values, the line, marker and label-format dialogs, and the
// widget opening the pages modally. The colour and font dialogs are never opened: the
// tests hand their answer to the button instead (ValueButton::edit).

#include <gtest/gtest.h>

#include <QApplication>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFont>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "format_dialogs.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/surface.h"
#include "orvane/core/color.h"
#include "orvane/core/error.h"
#include "orvane/core/font.h"
#include "orvane/data/data_set.h"
#include "orvane/host/headless_host.h"
#include "orvane/qt/property_pages.h"
#include "orvane/render/view.h"
#include "orvane/resample/resampling.h"
#include "property_editors.h"
#include "widget_fixture.h"

namespace orvane::qt {
namespace {

using pages::ColorButton;
using pages::FontButton;
using pages::LineButton;
using pages::LineValue;
using pages::MarkerButton;
using pages::MarkerValue;
using pages::NumberText;

// A control on a headless host with the sample data, and its property pages.
struct Pages {
  HeadlessHost host;
  Surface surface{host};
  std::unique_ptr<PropertyPagesDialog> dialog;

  explicit Pages(std::int32_t dataSets = 1) {
    surface.InitProperties();
    surface.OnResize(160, 120);
    surface.ShowSampleData();
    surface.DataSets().SetCount(dataSets);
    dialog = std::make_unique<PropertyPagesDialog>(surface);
  }

  // The editor called name on the page at path; throws (failing the test) when missing.
  template <class W>
  W& editor(const char* path, const char* name) {
    QWidget* page = dialog->findChild<QWidget*>(QString::fromLatin1(path));
    // The value buttons are class templates without meta-objects of their own: their type
    // is checked by dynamic_cast.
    W* widget = page ? dynamic_cast<W*>(page->findChild<QWidget*>(QString::fromLatin1(name))) : nullptr;
    if (widget == nullptr) throw std::runtime_error(std::string("no editor ") + path + " " + name);
    return *widget;
  }
  QLineEdit& line(const char* path, const char* name) { return editor<QLineEdit>(path, name); }
  QString errors() const { return dialog->findChild<QLabel*>(QStringLiteral("errorLabel"))->text(); }
  void click(QDialogButtonBox::StandardButton which) {
    dialog->findChild<QDialogButtonBox*>(QStringLiteral("buttons"))->button(which)->click();
  }
  std::vector<std::uint8_t> state() const { return surface.State(orvStateTypeFormattingAndData); }
};

// The description the control's own let gives for a value.
template <class Let>
QString Refusal(Let let) {
  HeadlessHost host;
  Surface probe(host);
  probe.InitProperties();
  try {
    let(probe);
  } catch (const Error& e) {
    return QString::fromStdString(e.Description());
  }
  return QStringLiteral("(accepted)");
}

TEST(PropertyPagesTree, HoldsEveryPageWithTheViewsAndResamplingOfEachDataSet) {
  Pages p(2);
  QStringList paths;
  for (QTreeWidgetItemIterator it(p.dialog->findChild<QTreeWidget*>(QStringLiteral("pageTree"))); *it; ++it) {
    QStringList parts;
    for (QTreeWidgetItem* item = *it; item; item = item->parent()) parts.prepend(item->text(0));
    paths << parts.join(QLatin1Char('/'));
  }
  const QStringList expected{
      "Surface", "Axes", "Axes/Axis X", "Axes/Axis Y", "Axes/Axis Z", "Contouring", "Faces", "Faces/Face XY",
      "Faces/Face XZ", "Faces/Face YZ", "View", "View/Data set 1", "View/Data set 1/Main", "View/Data set 1/Top",
      "View/Data set 1/Bottom", "View/Data set 2", "View/Data set 2/Main", "View/Data set 2/Top",
      "View/Data set 2/Bottom", "Resampling", "Resampling/Data set 1", "Resampling/Data set 2"};
  EXPECT_EQ(paths, expected);

  auto* stack = p.dialog->findChild<QStackedWidget*>(QStringLiteral("pageStack"));
  EXPECT_EQ(stack->currentWidget()->objectName(), QStringLiteral("Surface"));
  // A path or a node's name selects it; a node without a page shows its first child's.
  EXPECT_TRUE(p.dialog->showPage(QStringLiteral("view/data set 2/top")));
  EXPECT_EQ(stack->currentWidget()->objectName(), QStringLiteral("View/Data set 2/Top"));
  EXPECT_TRUE(p.dialog->showPage(QStringLiteral("Axis Y")));
  EXPECT_EQ(p.dialog->currentPage(), QStringLiteral("Axes/Axis Y"));
  EXPECT_TRUE(p.dialog->showPage(QStringLiteral("View")));
  EXPECT_EQ(stack->currentWidget()->objectName(), QStringLiteral("View/Data set 1/Main"));
  EXPECT_FALSE(p.dialog->showPage(QStringLiteral("Legend")));
  EXPECT_EQ(p.dialog->currentPage(), QStringLiteral("View"));

  // The second data set's pages edit the second data set.
  p.editor<QCheckBox>("View/Data set 2/Top", "MeshVisible").setChecked(true);
  p.line("Resampling/Data set 2", "IntervalCount").setText(QStringLiteral("25"));
  EXPECT_TRUE(p.dialog->apply()) << p.errors().toStdString();
  EXPECT_TRUE(p.surface.DataSets().Item(1).ViewTop().MeshVisible());
  EXPECT_FALSE(p.surface.DataSets().Item(0).ViewTop().MeshVisible());
  EXPECT_EQ(p.surface.DataSets().Item(1).Resampling().IntervalCount(), 25);
  EXPECT_EQ(p.surface.DataSets().Item(0).Resampling().IntervalCount(), 10);

  // The contouring page carries the exact bands and the ties as well.
  p.editor<QCheckBox>("Contouring", "ExactBands").setChecked(true);
  p.editor<QCheckBox>("Contouring", "TiesAbove").setChecked(true);
  EXPECT_TRUE(p.dialog->apply()) << p.errors().toStdString();
  EXPECT_TRUE(p.surface.Contouring().ExactBands());
  EXPECT_TRUE(p.surface.Contouring().TiesAbove());
}

TEST(PropertyPagesApply, EditsWaitForApplyAndThenGoThroughTheLets) {
  Pages p;
  p.line("Axes/Axis X", "Title").setText(QStringLiteral("Depth (m)"));
  p.editor<QComboBox>("Surface", "PlotType").setCurrentIndex(1);
  p.editor<ColorButton>("Surface", "BackColor").edit(Rgb(10, 20, 30));
  QFont serif(QStringLiteral("Liberation Serif"));
  serif.setPointSizeF(12.5);
  serif.setWeight(QFont::Bold);
  serif.setItalic(true);
  auto& font = p.editor<FontButton>("Surface", "Header.Font");
  font.edit(pages::FromQFont(serif, font.value()));
  p.line("Surface", "RotationX").setText(QStringLiteral("-30"));
  EXPECT_EQ(p.surface.Axes().XAxis().Title(), "X");  // pending until Apply
  EXPECT_EQ(p.surface.PlotType(), orvPlotType3D);

  p.click(QDialogButtonBox::Apply);
  EXPECT_EQ(p.errors(), QString());
  EXPECT_EQ(p.surface.Axes().XAxis().Title(), "Depth (m)");
  EXPECT_EQ(p.surface.PlotType(), orvPlotType2D);
  EXPECT_EQ(p.surface.BackColor(), Rgb(10, 20, 30));
  const Font& header = p.surface.Header().Font();
  EXPECT_EQ(header.Name(), "Liberation Serif");
  EXPECT_EQ(header.Size().scaled, 125000);
  EXPECT_TRUE(header.Bold());
  EXPECT_TRUE(header.Italic());
  EXPECT_FALSE(header.Underline());
  // The page shows what the control stored: -30 degrees is kept as 330.
  EXPECT_EQ(p.line("Surface", "RotationX").text(), QStringLiteral("330"));

  // An unedited page lets nothing: the axis keeps a title set behind the dialog's back.
  p.surface.Axes().XAxis().SetTitle("Set elsewhere");
  p.line("Surface", "Zoom").setText(QStringLiteral("1.5"));
  EXPECT_TRUE(p.dialog->apply());
  EXPECT_EQ(p.surface.Axes().XAxis().Title(), "Set elsewhere");
  EXPECT_EQ(p.surface.Zoom(), 1.5);
}

TEST(PropertyPagesApply, CancelAfterApplyPutsTheStateBackByteForByte) {
  Pages p;
  const std::vector<std::uint8_t> before = p.state();
  p.line("Axes/Axis Z", "Title").setText(QStringLiteral("Height"));
  p.line("Surface", "Zoom").setText(QStringLiteral("2.5"));
  p.editor<QCheckBox>("Faces", "UseMasterProperties").setChecked(false);
  p.editor<ColorButton>("Faces/Face XY", "FillColor").edit(Rgb(200, 0, 0));
  p.editor<LineButton>("Axes", "AxisLineMaster").edit(LineValue{Rgb(0, 0, 255), orvDrawStyleDashDot, 3});
  p.click(QDialogButtonBox::Apply);
  ASSERT_EQ(p.errors(), QString());
  // The master is let before the face's own colour, which it no longer overrules.
  EXPECT_EQ(p.surface.Faces().XYFace().FillColor(), Rgb(200, 0, 0));
  EXPECT_EQ(p.surface.Axes().XAxis().AxisLine().DrawStyle(), orvDrawStyleDashDot);
  EXPECT_EQ(p.surface.Axes().YAxis().AxisLine().Width(), 3);
  EXPECT_NE(p.state(), before);

  p.line("Axes/Axis X", "Title").setText(QStringLiteral("Never applied"));
  p.click(QDialogButtonBox::Cancel);
  EXPECT_EQ(p.dialog->result(), QDialog::Rejected);
  EXPECT_EQ(p.state(), before);
  EXPECT_EQ(p.surface.Zoom(), 1.0);
  EXPECT_EQ(p.surface.Axes().ZAxis().Title(), "Z");
  EXPECT_EQ(p.surface.Axes().XAxis().Title(), "X");

  // Cancel without an Apply changes nothing, not even what was set behind its back.
  Pages q;
  q.surface.SetZoom(3.0);
  const std::vector<std::uint8_t> now = q.state();
  q.line("Surface", "Zoom").setText(QStringLiteral("4"));
  q.dialog->reject();
  EXPECT_EQ(q.state(), now);
}

TEST(PropertyPagesApply, ARefusedValueShowsItsErrorAndGoesBackWhileTheOthersApply) {
  Pages p;
  p.dialog->show();
  p.line("Surface", "Zoom").setText(QStringLiteral("0"));
  p.line("Axes/Axis X", "Min").setText(QStringLiteral("abc"));
  p.line("View/Data set 1/Main", "Transparency").setText(QStringLiteral("nan"));
  p.line("Resampling/Data set 1", "IntervalCount").setText(QStringLiteral("99999999999"));
  p.line("Contouring", "AutoSetInterval").setText(QString());
  p.line("Axes/Axis Y", "MajorInterval").setText(QStringLiteral("1e999"));
  p.line("View/Data set 1/Top", "ContourLabelsDensity").setText(QStringLiteral("-1"));
  p.line("Axes/Axis X", "Title").setText(QStringLiteral("Applied"));
  p.editor<QCheckBox>("Surface", "LightingOn").setChecked(true);

  p.click(QDialogButtonBox::Ok);  // OK applies, but stays open after a refusal
  EXPECT_TRUE(p.dialog->isVisible());
  const QString errors = p.errors();
  EXPECT_TRUE(p.dialog->findChild<QLabel*>(QStringLiteral("errorLabel"))->isVisible());
  const QStringList lines = errors.split(QLatin1Char('\n'));
  ASSERT_EQ(lines.size(), 7) << errors.toStdString();
  EXPECT_EQ(lines[0], QStringLiteral("Surface, Zoom: Invalid procedure call or argument"));
  EXPECT_EQ(lines[1], QStringLiteral("Axes/Axis X, Minimum: \"abc\" is not a number."));
  EXPECT_EQ(lines[2], QStringLiteral("Axes/Axis Y, Major interval: \"1e999\" is out of the range of numbers."));
  EXPECT_EQ(lines[3], QStringLiteral("Contouring, Level interval: A number is required."));
  EXPECT_EQ(lines[4], QStringLiteral("View/Data set 1/Main, Transparency (1 opaque, 0 clear): \"nan\" is not a "
                                     "finite number."));
  EXPECT_EQ(lines[5], "View/Data set 1/Top, Density: " +
                          Refusal([](Surface& s) { s.DataSets().Item(0).ViewTop().SetContourLabelsDensity(-1); }));
  EXPECT_EQ(lines[6], QStringLiteral("Resampling/Data set 1, Interval count: \"99999999999\" is outside "
                                     "-2147483648 to 2147483647."));

  // The refused fields show the control's values again; the others were applied.
  EXPECT_EQ(p.line("Surface", "Zoom").text(), QStringLiteral("1"));
  EXPECT_EQ(p.line("View/Data set 1/Top", "ContourLabelsDensity").text(), QStringLiteral("4"));
  EXPECT_EQ(p.line("Contouring", "AutoSetInterval").text(), QStringLiteral("1"));
  EXPECT_EQ(p.surface.Zoom(), 1.0);
  EXPECT_EQ(p.surface.Axes().XAxis().Title(), "Applied");
  EXPECT_TRUE(p.surface.LightingOn());

  // With nothing refused the errors go and OK closes.
  p.line("Surface", "Zoom").setText(QStringLiteral("2"));
  p.click(QDialogButtonBox::Ok);
  EXPECT_EQ(p.errors(), QString());
  EXPECT_EQ(p.dialog->result(), QDialog::Accepted);
  EXPECT_FALSE(p.dialog->isVisible());
  EXPECT_EQ(p.surface.Zoom(), 2.0);
}

TEST(PropertyPagesApply, ARefusedMarkerLeavesEveryOtherMarkerPropertyAsItWas) {
  Pages p;
  auto& markers = p.editor<MarkerButton>("View/Data set 1/Main", "DataMarkersMaster");
  MarkerValue wanted = markers.value();
  wanted.visible = true;
  wanted.shape = orvMarkerShape2DCircle;
  wanted.size = -1.0;
  markers.edit(wanted);
  EXPECT_FALSE(p.dialog->apply());
  EXPECT_EQ(p.errors(), "View/Data set 1/Main, Data markers: " +
                            Refusal([](Surface& s) {
                              s.DataSets().Item(0).ViewMain().DataMarkersMaster().SetSize(-1);
                            }));
  const Marker& marker = p.surface.DataSets().Item(0).ViewMain().DataMarkersMaster();
  EXPECT_FALSE(marker.Visible());
  EXPECT_EQ(marker.Shape(), orvMarkerShape3DCube);
  EXPECT_EQ(markers.value(), MarkerValue::From(marker));

  wanted.size = 5.0;
  markers.edit(wanted);
  EXPECT_TRUE(p.dialog->apply());
  EXPECT_TRUE(marker.Visible());
  EXPECT_EQ(marker.Shape(), orvMarkerShape2DCircle);
  EXPECT_EQ(marker.Size(), 5.0);
}

TEST(PropertyPagesApply, ContourLevelsAreEditedAsATable) {
  Pages p;
  // With automatic levels off and no colour map the levels keep what the table sets.
  p.editor<QComboBox>("Contouring", "AutoSetContoursType").setCurrentIndex(0);
  p.editor<QComboBox>("Contouring", "ColorMapType").setCurrentIndex(0);
  auto& table = p.editor<QTableWidget>("Contouring", "levelsTable");
  const Contours& contours = p.surface.Contouring().Contours();
  ASSERT_GT(contours.Count(), 2);
  ASSERT_EQ(table.rowCount(), contours.Count());
  EXPECT_EQ(table.item(1, 0)->text(), NumberText(contours.Item(1)->Value()));

  auto& remove = p.editor<QPushButton>("Contouring", "removeLevel");
  while (table.rowCount() > 2) remove.click();  // the last row each time
  table.item(0, 0)->setText(QStringLiteral("0.5"));
  table.item(1, 0)->setText(QStringLiteral("-0.25"));
  table.item(0, 1)->setData(Qt::UserRole, static_cast<qulonglong>(Rgb(255, 0, 0)));
  auto* style = static_cast<QComboBox*>(table.cellWidget(0, 3));
  style->setCurrentIndex(style->findText(QStringLiteral("Dot")));
  static_cast<QSpinBox*>(table.cellWidget(1, 4))->setValue(3);
  ASSERT_TRUE(p.dialog->apply()) << p.errors().toStdString();
  // Added in value order: the rows come back sorted.
  ASSERT_EQ(contours.Count(), 2);
  EXPECT_EQ(contours.Item(0)->Value(), -0.25);
  EXPECT_EQ(contours.Item(0)->LineWidth(), 3);
  EXPECT_EQ(contours.Item(1)->Value(), 0.5);
  EXPECT_EQ(contours.Item(1)->Color(), Rgb(255, 0, 0));
  EXPECT_EQ(contours.Item(1)->LineDrawStyle(), orvDrawStyleDot);
  EXPECT_EQ(table.item(0, 0)->text(), QStringLiteral("-0.25"));

  // A new row goes one above the last; a row whose value is no number is refused whole.
  p.editor<QPushButton>("Contouring", "addLevel").click();
  ASSERT_EQ(table.rowCount(), 3);
  EXPECT_EQ(table.item(2, 0)->text(), QStringLiteral("1.5"));
  table.item(1, 0)->setText(QStringLiteral("x"));
  EXPECT_FALSE(p.dialog->apply());
  EXPECT_EQ(p.errors(), QStringLiteral("Contouring, Levels: \"x\" is not a number."));
  EXPECT_EQ(contours.Count(), 2);
  EXPECT_EQ(table.rowCount(), 2);
}

TEST(PropertyPagesApply, EveryFieldTakenAsShownChangesNoStateByte) {
  // Every text field re-entered as it is shown, and every check box, combo box and value
  // button edited back to its own value, lets each property its stored value again: the
  // numbers are shown to their last digit and nothing is lost on the way.
  Pages p(2);
  p.surface.Axes().XAxis().SetZoom(0.1 + 0.2);
  p.surface.SetOffsetHorizontal(1.0 / 3.0);
  p.surface.DataSets().Item(1).Resampling().Kriging().SetNugget(1e-300);
  p.surface.Header().Font().SetSize(9.1234);
  delete p.dialog.release();
  p.dialog = std::make_unique<PropertyPagesDialog>(p.surface);
  const std::vector<std::uint8_t> before = p.state();
  int edited = 0;
  for (QWidget* w : p.dialog->findChildren<QWidget*>()) {
    if (auto* line = qobject_cast<QLineEdit*>(w)) {
      if (line->parentWidget() && qobject_cast<QAbstractSpinBox*>(line->parentWidget())) continue;
      line->setText(line->text() + QStringLiteral(" "));
      line->setText(line->text().trimmed());
    } else if (auto* check = qobject_cast<QCheckBox*>(w)) {
      check->toggle();
      check->toggle();
    } else if (auto* combo = qobject_cast<QComboBox*>(w); combo && combo->count() > 1) {
      const int index = combo->currentIndex();
      combo->setCurrentIndex((index + 1) % combo->count());
      combo->setCurrentIndex(index);
    } else if (auto* button = dynamic_cast<LineButton*>(w)) {
      button->edit(LineValue(button->value()));
    } else if (auto* font = dynamic_cast<FontButton*>(w)) {
      font->edit(pages::FontValue(font->value()));
    } else if (auto* color = dynamic_cast<ColorButton*>(w)) {
      color->edit(orvane::Color(color->value()));
    } else {
      continue;
    }
    ++edited;
  }
  EXPECT_GT(edited, 150);
  EXPECT_TRUE(p.dialog->apply()) << p.errors().toStdString();
  EXPECT_EQ(p.state(), before);
  EXPECT_EQ(p.line("Axes/Axis X", "Zoom").text(), QStringLiteral("0.30000000000000004"));
  EXPECT_EQ(p.line("Resampling/Data set 2", "Kriging.Nugget").text(), QStringLiteral("1e-300"));
}

TEST(PropertyPagesApply, MastersRuleTheMembersTheyAreCopiedInto) {
  Pages p;
  // While the axes' own settings are used for all, an axis's title font is the master's:
  // the page shows the font going back.
  auto& titleFont = p.editor<FontButton>("Axes/Axis Y", "TitleFont");
  pages::FontValue big = titleFont.value();
  big.size = 20.0;
  titleFont.edit(big);
  p.editor<pages::FormatEdit>("Axes", "LabelsFormatMaster").line().setText(QStringLiteral("0.0"));
  EXPECT_TRUE(p.dialog->apply()) << p.errors().toStdString();
  EXPECT_EQ(p.surface.Axes().YAxis().TitleFont().Size().scaled, 80000);
  EXPECT_EQ(titleFont.value().size, 8.0);
  EXPECT_EQ(p.editor<pages::FormatEdit>("Axes/Axis Z", "LabelsFormat").line().text(), QStringLiteral("0.0"));

  // Unticked on the Axes page in the same Apply, the axis takes its own.
  p.editor<QCheckBox>("Axes", "UseMasterProperties").setChecked(false);
  titleFont.edit(big);
  EXPECT_TRUE(p.dialog->apply()) << p.errors().toStdString();
  EXPECT_EQ(p.surface.Axes().YAxis().TitleFont().Size().scaled, 200000);
  EXPECT_EQ(p.surface.Axes().XAxis().TitleFont().Size().scaled, 80000);
}

TEST(PropertyEditors, NumbersAreReadExactlyAndTextThatIsNoNumberIsNamed) {
  EXPECT_EQ(pages::ParseNumber(QStringLiteral(" +2.5e3 ")), 2500.0);
  EXPECT_EQ(pages::ParseNumber(QStringLiteral("-0.1")), -0.1);
  EXPECT_EQ(pages::ParseNumber(QStringLiteral("4.9e-324")), 4.9e-324);
  EXPECT_EQ(pages::ParseInteger(QStringLiteral("-2147483648")), -2147483647 - 1);
  EXPECT_EQ(pages::ParseInteger(QStringLiteral("+7")), 7);
  // Text refused as a number (or, where whole, as a whole number), and why.
  const std::vector<std::tuple<QString, bool, std::string>> refused{
      {QString(), false, "A number is required."},
      {QStringLiteral("1,5"), false, "\"1,5\" is not a number."},
      {QStringLiteral("inf"), false, "\"inf\" is not a finite number."},
      {QStringLiteral("-1e400"), false, "\"-1e400\" is out of the range of numbers."},
      {QStringLiteral("0x10"), false, "\"0x10\" is not a number."},
      {QStringLiteral("  "), true, "A whole number is required."},
      {QStringLiteral("2.0"), true, "\"2.0\" is not a whole number."},
      {QStringLiteral("2147483648"), true, "\"2147483648\" is outside -2147483648 to 2147483647."},
      {QStringLiteral("99999999999999999999"), true, "\"99999999999999999999\" is outside -2147483648 to 2147483647."}};
  for (const auto& [text, whole, message] : refused) {
    try {
      if (whole) {
        pages::ParseInteger(text);
      } else {
        pages::ParseNumber(text);
      }
      ADD_FAILURE() << text.toStdString() << " was taken";
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 5);
      EXPECT_EQ(e.Description(), message);
    }
  }
}

TEST(PropertyEditors, AQtFontMapsToTheControlsSevenAttributes) {
  QFont font(QStringLiteral("Liberation Mono"));
  font.setPointSizeF(10.25);
  font.setWeight(QFont::DemiBold);
  font.setUnderline(true);
  font.setStrikeOut(true);
  const pages::FontValue value = pages::FromQFont(font, pages::FontValue{});
  EXPECT_EQ(value, (pages::FontValue{"Liberation Mono", 10.25, 600, false, true, true}));
  Font target;
  value.ApplyTo(target);
  EXPECT_EQ(pages::FontValue::From(target), value);
  EXPECT_EQ(pages::FromQFont(pages::ToQFont(value), pages::FontValue{}), value);

  // A font sized in pixels keeps the size it had.
  QFont pixels(QStringLiteral("Liberation Sans"));
  pixels.setPixelSize(30);
  EXPECT_EQ(pages::FromQFont(pixels, value).size, 10.25);
  // An empty name is refused by the font, which keeps every attribute it had.
  pages::FontValue nameless = value;
  nameless.name.clear();
  nameless.italic = true;
  EXPECT_THROW(nameless.ApplyTo(target), Error);
  EXPECT_EQ(pages::FontValue::From(target), value);
}

TEST(FormatDialogs, TheMarkerDialogHandsBackWhatItsWidgetsShow) {
  MarkerValue start;
  start.edgeLine = LineValue{Rgb(1, 1, 1), orvDrawStyleDot, 2};
  pages::MarkerDialog dialog(start);
  EXPECT_EQ(dialog.value(), start);
  dialog.findChild<QCheckBox*>(QStringLiteral("Visible"))->setChecked(true);
  auto* shape = dialog.findChild<QComboBox*>(QStringLiteral("Shape"));
  shape->setCurrentIndex(shape->findText(QStringLiteral("Plus")));
  dialog.findChild<QDoubleSpinBox*>(QStringLiteral("Size"))->setValue(7.5);
  dynamic_cast<ColorButton*>(dialog.findChild<QWidget*>(QStringLiteral("FillColor")))->edit(Rgb(0, 128, 0));
  MarkerValue expected = start;
  expected.visible = true;
  expected.shape = orvMarkerShape2DPlus;
  expected.size = 7.5;
  expected.fillColor = Rgb(0, 128, 0);
  EXPECT_EQ(dialog.value(), expected);
}

TEST(FormatDialogs, TheLabelFormatPreviewFollowsThePatternAndTheSample) {
  pages::LabelFormatDialog dialog("0.00");
  auto* pattern = dialog.findChild<QLineEdit*>(QStringLiteral("formatEdit"));
  auto* sample = dialog.findChild<QLineEdit*>(QStringLiteral("sampleEdit"));
  auto* preview = dialog.findChild<QLabel*>(QStringLiteral("previewLabel"));
  EXPECT_EQ(preview->text(), QStringLiteral("1234.57"));
  pattern->setText(QStringLiteral("#,##0.0"));
  EXPECT_EQ(preview->text(), QStringLiteral("1,234.6"));
  pattern->setText(QStringLiteral("0.00E+00;(0.00E+00)"));
  sample->setText(QStringLiteral("-0.0042"));
  EXPECT_EQ(preview->text(), QStringLiteral("(4.20E-03)"));
  sample->setText(QStringLiteral("x"));
  EXPECT_EQ(preview->text(), QStringLiteral("(the sample is not a number)"));

  // A common format picked from the list becomes the pattern.
  sample->setText(QStringLiteral("0.25"));
  auto* presets = dialog.findChild<QComboBox*>(QStringLiteral("presetCombo"));
  const int percent = presets->findText(QStringLiteral("0%"));
  ASSERT_GT(percent, 0);
  presets->setCurrentIndex(percent);
  Q_EMIT presets->activated(percent);
  EXPECT_EQ(dialog.pattern(), "0%");
  EXPECT_EQ(preview->text(), QStringLiteral("25%"));
}

TEST(FormatDialogs, TheLineDialogEditsColourStyleAndWidth) {
  pages::LineDialog dialog(LineValue{Rgb(1, 2, 3), orvDrawStyleDash, 2});
  auto* color = dynamic_cast<ColorButton*>(dialog.findChild<QWidget*>(QStringLiteral("colorButton")));
  ASSERT_NE(color, nullptr);
  auto* style = dialog.findChild<QComboBox*>(QStringLiteral("styleCombo"));
  auto* width = dialog.findChild<QSpinBox*>(QStringLiteral("widthSpin"));
  EXPECT_EQ(dialog.value(), (LineValue{Rgb(1, 2, 3), orvDrawStyleDash, 2}));
  EXPECT_EQ(style->currentText(), QStringLiteral("Dash"));
  color->edit(Rgb(250, 128, 0));
  style->setCurrentIndex(style->findText(QStringLiteral("Dash-dot-dot")));
  width->setValue(0);  // no line: a width the line takes like any other
  EXPECT_EQ(dialog.value(), (LineValue{Rgb(250, 128, 0), orvDrawStyleDashDotDot, 0}));

  // A style the line refuses: the page shows the error and the line keeps its own.
  Pages p;
  auto& mesh = p.editor<LineButton>("View/Data set 1/Main", "MeshLine");
  mesh.edit(LineValue{Rgb(9, 9, 9), 7, 4});
  EXPECT_FALSE(p.dialog->apply());
  const Line& line = p.surface.DataSets().Item(0).ViewMain().MeshLine();
  EXPECT_EQ(p.errors(), "View/Data set 1/Main, Mesh line: " + Refusal([](Surface& s) {
                          s.DataSets().Item(0).ViewMain().MeshLine().SetDrawStyle(7);
                        }));
  EXPECT_EQ(LineValue::From(line), LineValue{});
  mesh.edit(dialog.value());
  EXPECT_TRUE(p.dialog->apply());
  EXPECT_EQ(LineValue::From(line), dialog.value());
}

TEST(PropertyPagesWidget, ShowPropertyPagesOpensTheDialogModallyAtTheNamedPage) {
  testing::Shown s;
  s.surface().SetZoom(1.25);
  QString page;
  bool modal = false;
  QWidget* parent = nullptr;
  QTimer poll;
  // exec() has its own event loop: the timer finds the dialog there and closes it.
  QObject::connect(&poll, &QTimer::timeout, [&] {
    auto* dialog = qobject_cast<PropertyPagesDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr) return;
    page = dialog->currentPage();
    modal = dialog->isModal();
    parent = dialog->parentWidget();
    auto* surfacePage = dialog->findChild<QWidget*>(QStringLiteral("Surface"));
    surfacePage->findChild<QLineEdit*>(QStringLiteral("Zoom"))->setText(QStringLiteral("3"));
    dialog->apply();
    dialog->reject();
  });
  poll.start(10);
  s.surface().ShowPropertyPages({"Legend", "axes/axis z", "Surface"});
  poll.stop();
  EXPECT_EQ(page, QStringLiteral("Axes/Axis Z"));
  EXPECT_TRUE(modal);
  EXPECT_EQ(parent, &s.widget);
  EXPECT_EQ(s.surface().Zoom(), 1.25);  // cancelled after the Apply
  EXPECT_EQ(s.widget.findChild<PropertyPagesDialog*>(), nullptr);
}

}  // namespace
}  // namespace orvane::qt
