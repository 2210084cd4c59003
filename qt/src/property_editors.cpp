// Values, editors, bindings and pages of the property pages.

#include "property_editors.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QStringList>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "format_dialogs.h"
#include "orvane/core/error.h"

namespace orvane::qt::pages {

namespace {

// Errors raised by the pages themselves, for text that is no value.
constexpr const char* kPagesSource = "Orvada.PropertyPages";

// Lets every attribute through apply; when one is refused, puts back what was there before
// (through restore, its own failures ignored) and raises the refusal.
template <class Apply, class Restore>
void AllOrNothing(Apply apply, Restore restore) {
  try {
    apply();
  } catch (...) {
    try {
      restore();
    } catch (...) {  // the old value was the object's own: nothing better to put back
    }
    throw;
  }
}

// A small square of the colour, framed, as a button's icon.
QIcon Swatch(orvane::Color color) {
  QPixmap pixmap(16, 16);
  pixmap.fill(Qt::black);
  QPixmap inner(14, 14);
  inner.fill(ToQColor(color));
  {
    QPainter painter(&pixmap);
    painter.drawPixmap(1, 1, inner);
  }
  return QIcon(pixmap);
}

QString ColorText(orvane::Color color) {
  const QColor c = ToQColor(color);
  return c.name(QColor::HexRgb).toUpper();
}

QString ChoiceName(const Choices& choices, std::int32_t value) {
  for (const auto& [name, v] : choices) {
    if (v == value) return name;
  }
  return QString::number(value);
}

}  // namespace

// --- Values -----------------------------------------------------------------------------

FontValue FontValue::From(const orvane::Font& font) {
  return {font.Name(), font.SizePoints(), font.Weight(), font.Italic(), font.Underline(), font.Strikethrough()};
}

void FontValue::ApplyTo(orvane::Font& font) const {
  const FontValue old = From(font);
  const auto let = [&font](const FontValue& v) {
    font.SetName(v.name);
    font.SetSize(v.size);
    font.SetWeight(v.weight);
    font.SetItalic(v.italic);
    font.SetUnderline(v.underline);
    font.SetStrikethrough(v.strikethrough);
  };
  AllOrNothing([&] { let(*this); }, [&] { let(old); });
}

LineValue LineValue::From(const orvane::Line& line) { return {line.Color(), line.DrawStyle(), line.Width()}; }

void LineValue::ApplyTo(orvane::Line& line) const {
  const LineValue old = From(line);
  const auto let = [&line](const LineValue& v) {
    line.SetColor(v.color);
    line.SetDrawStyle(v.drawStyle);
    line.SetWidth(v.width);
  };
  AllOrNothing([&] { let(*this); }, [&] { let(old); });
}

MarkerValue MarkerValue::From(const orvane::Marker& marker) {
  MarkerValue v;
  v.visible = marker.Visible();
  v.shape = marker.Shape();
  v.size = marker.Size();
  v.fillVisible = marker.FillVisible();
  v.fillColor = marker.FillColor();
  v.edgeVisible = marker.EdgeVisible();
  v.edgeLine = LineValue::From(marker.EdgeLine());
  return v;
}

void MarkerValue::ApplyTo(orvane::Marker& marker) const {
  const MarkerValue old = From(marker);
  const auto let = [&marker](const MarkerValue& v) {
    marker.SetVisible(v.visible);
    marker.SetShape(v.shape);
    marker.SetSize(v.size);
    marker.SetFillVisible(v.fillVisible);
    marker.SetFillColor(v.fillColor);
    marker.SetEdgeVisible(v.edgeVisible);
    v.edgeLine.ApplyTo(marker.EdgeLine());
  };
  AllOrNothing([&] { let(*this); }, [&] { let(old); });
}

QFont ToQFont(const FontValue& value) {
  QFont font(QString::fromStdString(value.name));
  if (value.size > 0.0) font.setPointSizeF(value.size);
  // Qt's weights run 1..1000 on the same scale (400 normal, 700 bold).
  font.setWeight(static_cast<QFont::Weight>(std::clamp<int>(value.weight, 1, 1000)));
  font.setItalic(value.italic);
  font.setUnderline(value.underline);
  font.setStrikeOut(value.strikethrough);
  return font;
}

FontValue FromQFont(const QFont& font, const FontValue& previous) {
  FontValue v = previous;
  v.name = font.family().toStdString();
  // A font sized in pixels has no point size: the previous size stays.
  if (font.pointSizeF() > 0.0) v.size = font.pointSizeF();
  v.weight = static_cast<std::int16_t>(std::clamp(static_cast<int>(font.weight()), 0, 1000));
  v.italic = font.italic();
  v.underline = font.underline();
  v.strikethrough = font.strikeOut();
  return v;
}

QColor ToQColor(orvane::Color color) {
  const ColorBytes b = SplitColor(color);
  return {b.red, b.green, b.blue};
}

orvane::Color FromQColor(const QColor& color) {
  return Rgb(static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
             static_cast<std::uint8_t>(color.blue()));
}

// --- Choices ----------------------------------------------------------------------------

const Choices& DrawStyleChoices() {
  static const Choices choices{{QStringLiteral("Solid"), orvDrawStyleSolid},
                               {QStringLiteral("Dash"), orvDrawStyleDash},
                               {QStringLiteral("Dot"), orvDrawStyleDot},
                               {QStringLiteral("Dash-dot"), orvDrawStyleDashDot},
                               {QStringLiteral("Dash-dot-dot"), orvDrawStyleDashDotDot}};
  return choices;
}

const Choices& MarkerShapeChoices() {
  static const Choices choices{{QStringLiteral("Cube"), orvMarkerShape3DCube},
                               {QStringLiteral("Pyramid"), orvMarkerShape3DPyramid},
                               {QStringLiteral("Square"), orvMarkerShape2DSquare},
                               {QStringLiteral("Triangle"), orvMarkerShape2DTriangle},
                               {QStringLiteral("Circle"), orvMarkerShape2DCircle},
                               {QStringLiteral("Plus"), orvMarkerShape2DPlus},
                               {QStringLiteral("Cross"), orvMarkerShape2DCross}};
  return choices;
}

void FillChoices(QComboBox& combo, const Choices& choices) {
  for (const auto& [name, value] : choices) combo.addItem(name, value);
}

void SelectChoice(QComboBox& combo, std::int32_t value) {
  int index = combo.findData(value);
  if (index < 0) {
    // A value the control took without a name of its own (some lets do not check).
    combo.addItem(QString::number(value), value);
    index = combo.count() - 1;
  }
  combo.setCurrentIndex(index);
}

std::int32_t SelectedChoice(const QComboBox& combo) { return combo.currentData().toInt(); }

// --- Numbers as text --------------------------------------------------------------------

QString NumberText(double value) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return QString::fromLatin1(buffer, static_cast<qsizetype>(result.ptr - buffer));
}

double ParseNumber(const QString& text) {
  const QByteArray bytes = text.trimmed().toUtf8();
  if (bytes.isEmpty()) throw Error(5, kPagesSource, "A number is required.");
  const char* first = bytes.constData();
  const char* last = first + bytes.size();
  if (*first == '+') ++first;  // from_chars takes no plus sign
  double value = 0.0;
  const auto [end, ec] = std::from_chars(first, last, value);
  const std::string typed = text.trimmed().toStdString();
  if (ec == std::errc::result_out_of_range) {
    throw Error(5, kPagesSource, "\"" + typed + "\" is out of the range of numbers.");
  }
  if (ec != std::errc() || end != last) throw Error(5, kPagesSource, "\"" + typed + "\" is not a number.");
  if (!std::isfinite(value)) throw Error(5, kPagesSource, "\"" + typed + "\" is not a finite number.");
  return value;
}

std::int32_t ParseInteger(const QString& text) {
  const QByteArray bytes = text.trimmed().toUtf8();
  if (bytes.isEmpty()) throw Error(5, kPagesSource, "A whole number is required.");
  const char* first = bytes.constData();
  const char* last = first + bytes.size();
  if (*first == '+') ++first;
  std::int64_t value = 0;
  const auto [end, ec] = std::from_chars(first, last, value);
  const std::string typed = text.trimmed().toStdString();
  if (ec == std::errc() && end == last && value >= std::numeric_limits<std::int32_t>::min() &&
      value <= std::numeric_limits<std::int32_t>::max()) {
    return static_cast<std::int32_t>(value);
  }
  if (ec == std::errc::invalid_argument || (ec == std::errc() && end != last)) {
    throw Error(5, kPagesSource, "\"" + typed + "\" is not a whole number.");
  }
  throw Error(5, kPagesSource, "\"" + typed + "\" is outside -2147483648 to 2147483647.");
}

// --- Editors ----------------------------------------------------------------------------

ColorButton* MakeColorButton(QWidget* parent) {
  return new ColorButton(
      [](QToolButton& b, const orvane::Color& c) {
        b.setIcon(Swatch(c));
        b.setText(ColorText(c));
      },
      [](QWidget* owner, const orvane::Color& c) -> std::optional<orvane::Color> {
        const QColor chosen = QColorDialog::getColor(ToQColor(c), owner, QObject::tr("Colour"));
        if (!chosen.isValid()) return std::nullopt;
        return FromQColor(chosen);
      },
      parent);
}

FontButton* MakeFontButton(QWidget* parent) {
  return new FontButton(
      [](QToolButton& b, const FontValue& f) {
        QStringList parts{QString::fromStdString(f.name), QObject::tr("%1 pt").arg(f.size)};
        if (f.weight > 550) parts << QObject::tr("bold");
        if (f.italic) parts << QObject::tr("italic");
        if (f.underline) parts << QObject::tr("underlined");
        if (f.strikethrough) parts << QObject::tr("struck through");
        b.setText(parts.join(QStringLiteral(", ")));
      },
      [](QWidget* owner, const FontValue& f) -> std::optional<FontValue> {
        bool ok = false;
        const QFont chosen = QFontDialog::getFont(&ok, ToQFont(f), owner, QObject::tr("Font"));
        if (!ok) return std::nullopt;
        return FromQFont(chosen, f);
      },
      parent);
}

LineButton* MakeLineButton(QWidget* parent) {
  return new LineButton(
      [](QToolButton& b, const LineValue& l) {
        b.setIcon(Swatch(l.color));
        b.setText(QObject::tr("%1, %2 px").arg(ChoiceName(DrawStyleChoices(), l.drawStyle)).arg(l.width));
      },
      [](QWidget* owner, const LineValue& l) -> std::optional<LineValue> {
        LineDialog dialog(l, owner);
        if (dialog.exec() != QDialog::Accepted) return std::nullopt;
        return dialog.value();
      },
      parent);
}

MarkerButton* MakeMarkerButton(QWidget* parent) {
  return new MarkerButton(
      [](QToolButton& b, const MarkerValue& m) {
        b.setIcon(Swatch(m.fillColor));
        b.setText(QObject::tr("%1, size %2%3")
                      .arg(ChoiceName(MarkerShapeChoices(), m.shape))
                      .arg(m.size)
                      .arg(m.visible ? QString() : QObject::tr(", hidden")));
      },
      [](QWidget* owner, const MarkerValue& m) -> std::optional<MarkerValue> {
        MarkerDialog dialog(m, owner);
        if (dialog.exec() != QDialog::Accepted) return std::nullopt;
        return dialog.value();
      },
      parent);
}

FormatEdit::FormatEdit(QWidget* parent)
    : QWidget(parent), line_(new QLineEdit(this)), button_(new QToolButton(this)) {
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(line_);
  layout->addWidget(button_);
  button_->setText(QStringLiteral("..."));
  button_->setToolTip(tr("Edit the format with a preview"));
  connect(button_, &QToolButton::clicked, this, [this] {
    LabelFormatDialog dialog(line_->text().toStdString(), this);
    if (dialog.exec() == QDialog::Accepted) line_->setText(QString::fromStdString(dialog.pattern()));
  });
}

// --- Bindings ---------------------------------------------------------------------------

void Binding::load() {
  loading_ = true;
  try {
    show();
  } catch (...) {
    loading_ = false;
    throw;
  }
  loading_ = false;
  edited_ = false;
}

void Binding::apply() {
  if (!edited_) return;
  edited_ = false;
  push();
}

void CheckTraits::Watch(QCheckBox& w, std::function<void()> f) {
  QObject::connect(&w, &QCheckBox::toggled, &w, std::move(f));
}

void TextTraits::Watch(QLineEdit& w, std::function<void()> f) {
  QObject::connect(&w, &QLineEdit::textChanged, &w, std::move(f));
}

void ChoiceTraits::Watch(QComboBox& w, std::function<void()> f) {
  QObject::connect(&w, &QComboBox::currentIndexChanged, &w, std::move(f));
}

// --- Pages ------------------------------------------------------------------------------

Page::Page(const QString& objectName, QWidget* parent)
    : QScrollArea(parent), form_(new QWidget(this)), layout_(new QFormLayout(form_)) {
  setObjectName(objectName);
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
  layout_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  setWidget(form_);
}

Page::~Page() {
  // The bindings are members and would go before the base class deletes the editors: an
  // editor that signals a change on its way out would reach a binding already gone.
  delete takeWidget();
}

void Page::add(std::unique_ptr<Binding> binding, const char* name) {
  binding->editor()->setObjectName(QString::fromLatin1(name));
  layout_->addRow(binding->label(), binding->editor());  // the form takes the editor
  bindings_.push_back(std::move(binding));
}

void Page::section(const QString& title) {
  auto* heading = new QLabel(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()), form_);
  layout_->addRow(heading);
}

}  // namespace orvane::qt::pages
