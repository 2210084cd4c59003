#pragma once

// The building blocks of the property pages, internal to orvane_qt (no compatibility
// promise): plain values for the compound formats (font, line, marker), the editor widgets
// that hold a pending value, and bindings. A binding is a label, an editor widget and the
// getter and setter of one property; a page is a table of bindings.
//
// Edits stay in the editors until the dialog applies them. A binding only knows whether
// its editor was edited since the control's value was loaded into it; applying pushes the
// edited value through the property's own setter, so the control validates it exactly as
// it validates any let.

#include <QCheckBox>
#include <QComboBox>
#include <QFont>
#include <QLineEdit>
#include <QScrollArea>
#include <QString>
#include <QToolButton>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/core/color.h"
#include "orvane/core/font.h"
#include "orvane/render/line.h"
#include "orvane/render/marker.h"

class QFormLayout;

namespace orvane::qt::pages {

// --- Values -----------------------------------------------------------------------------

// The seven attributes of a Font as one value (Bold is Weight above 550).
struct FontValue {
  std::string name = "Arial";
  double size = 8.0;  // points
  std::int16_t weight = 400;
  bool italic = false;
  bool underline = false;
  bool strikethrough = false;

  static FontValue From(const orvane::Font& font);
  // Lets each attribute on font; on a refusal the attributes go back and the error is raised.
  void ApplyTo(orvane::Font& font) const;
  friend bool operator==(const FontValue&, const FontValue&) = default;
};

// The three properties of a Line.
struct LineValue {
  orvane::Color color = 0;
  std::int32_t drawStyle = orvDrawStyleSolid;
  std::int32_t width = 1;

  static LineValue From(const orvane::Line& line);
  // Lets the three on line; on a refusal the line goes back and the error is raised.
  void ApplyTo(orvane::Line& line) const;
  friend bool operator==(const LineValue&, const LineValue&) = default;
};

// The properties of a Marker, its edge line included.
struct MarkerValue {
  bool visible = false;
  std::int32_t shape = orvMarkerShape3DCube;
  double size = 3.0;
  bool fillVisible = true;
  orvane::Color fillColor = 0x00FFFF;
  bool edgeVisible = true;
  LineValue edgeLine;

  static MarkerValue From(const orvane::Marker& marker);
  // Lets each property on marker; on a refusal the marker goes back and the error is raised.
  void ApplyTo(orvane::Marker& marker) const;
  friend bool operator==(const MarkerValue&, const MarkerValue&) = default;
};

// The font as Qt shows it (weights are on the same 0..1000 scale), and back.
QFont ToQFont(const FontValue& value);
FontValue FromQFont(const QFont& font, const FontValue& previous);

// 0x00BBGGRR and QColor.
QColor ToQColor(orvane::Color color);
orvane::Color FromQColor(const QColor& color);

// --- Choices ----------------------------------------------------------------------------

// The readable names of an enumeration's values.
using Choices = std::vector<std::pair<QString, std::int32_t>>;

const Choices& DrawStyleChoices();
const Choices& MarkerShapeChoices();

// Fills a combo box with the choices, each value as the item's data.
void FillChoices(QComboBox& combo, const Choices& choices);
// Selects value, adding an item for a value that has no name.
void SelectChoice(QComboBox& combo, std::int32_t value);
// The value of the selected item.
std::int32_t SelectedChoice(const QComboBox& combo);

// --- Numbers as text --------------------------------------------------------------------

// The shortest text that reads back as exactly value.
QString NumberText(double value);
// A finite number in C notation ("1.5", "-2e3"); raises error 5 with a text naming what
// was typed for anything else (empty, "nan", "1e999", "abc").
double ParseNumber(const QString& text);
// A whole number within 32 bits; raises error 5 otherwise.
std::int32_t ParseInteger(const QString& text);

// --- Editors ----------------------------------------------------------------------------

// A button that holds a value, shows it (text, icon) and edits it in a dialog of its own
// when clicked. setValue shows a value without counting as an edit; edit() is what a
// click does with the dialog's answer, and is the seam tests use instead of the dialog.
template <class T>
class ValueButton : public QToolButton {
 public:
  using Describe = std::function<void(QToolButton&, const T&)>;
  using Ask = std::function<std::optional<T>(QWidget* parent, const T& current)>;

  ValueButton(Describe describe, Ask ask, QWidget* parent = nullptr)
      : QToolButton(parent), describe_(std::move(describe)), ask_(std::move(ask)) {
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QToolButton::clicked, this, [this] {
      if (std::optional<T> chosen = ask_(this, value_)) edit(*chosen);
    });
    describe_(*this, value_);
  }

  const T& value() const noexcept { return value_; }
  void setValue(const T& value) {
    value_ = value;
    describe_(*this, value_);
  }
  // Takes value as the user's edit.
  void edit(const T& value) {
    setValue(value);
    if (onEdited_) onEdited_();
  }
  void setOnEdited(std::function<void()> onEdited) { onEdited_ = std::move(onEdited); }

 private:
  Describe describe_;
  Ask ask_;
  std::function<void()> onEdited_;
  T value_{};
};

using ColorButton = ValueButton<orvane::Color>;
using FontButton = ValueButton<FontValue>;
using LineButton = ValueButton<LineValue>;
using MarkerButton = ValueButton<MarkerValue>;

ColorButton* MakeColorButton(QWidget* parent);
FontButton* MakeFontButton(QWidget* parent);
LineButton* MakeLineButton(QWidget* parent);
MarkerButton* MakeMarkerButton(QWidget* parent);

// A label format: its text, and a button that opens the format dialog with a preview.
class FormatEdit : public QWidget {
 public:
  explicit FormatEdit(QWidget* parent = nullptr);
  QLineEdit& line() noexcept { return *line_; }
  QToolButton& button() noexcept { return *button_; }

 private:
  QLineEdit* line_;
  QToolButton* button_;
};

// --- Bindings ---------------------------------------------------------------------------

// One property on a page: its label, its editor, and whether the editor was edited since
// the control's value was loaded.
class Binding {
 public:
  Binding(QString label, QWidget* editor) : label_(std::move(label)), editor_(editor) {}
  virtual ~Binding() = default;
  Binding(const Binding&) = delete;
  Binding& operator=(const Binding&) = delete;

  const QString& label() const noexcept { return label_; }
  QWidget* editor() const noexcept { return editor_; }
  bool edited() const noexcept { return edited_; }

  // The editor shows the control's current value, unedited.
  void load();
  // Pushes an edited value through the setter (nothing when unedited); raises what the
  // setter raises. Either way the edit is spent: the caller loads again.
  void apply();

 protected:
  // What the editors call on every change; changes made by load() do not count.
  void markEdited() noexcept {
    if (!loading_) edited_ = true;
  }

 private:
  virtual void show() = 0;
  virtual void push() = 0;

  QString label_;
  QWidget* editor_;
  bool edited_ = false;
  bool loading_ = false;
};

// A binding of a value of type Traits::Value shown in a Traits::Widget. Traits supply
// Show(widget, value), Read(widget) (which may raise for text that is no value) and
// Watch(widget, onChange).
template <class Traits>
class FieldBinding final : public Binding {
 public:
  using Value = typename Traits::Value;
  using Widget = typename Traits::Widget;

  FieldBinding(QString label, Widget* widget, std::function<Value()> get, std::function<void(const Value&)> set)
      : Binding(std::move(label), widget), widget_(widget), get_(std::move(get)), set_(std::move(set)) {
    Traits::Watch(*widget_, [this] { markEdited(); });
  }

 private:
  void show() override { Traits::Show(*widget_, get_()); }
  void push() override { set_(Traits::Read(*widget_)); }

  Widget* widget_;
  std::function<Value()> get_;
  std::function<void(const Value&)> set_;
};

struct CheckTraits {
  using Value = bool;
  using Widget = QCheckBox;
  static void Show(QCheckBox& w, bool v) { w.setChecked(v); }
  static bool Read(const QCheckBox& w) { return w.isChecked(); }
  static void Watch(QCheckBox& w, std::function<void()> f);
};

struct TextTraits {
  using Value = std::string;
  using Widget = QLineEdit;
  static void Show(QLineEdit& w, const std::string& v) { w.setText(QString::fromStdString(v)); }
  static std::string Read(const QLineEdit& w) { return w.text().toStdString(); }
  static void Watch(QLineEdit& w, std::function<void()> f);
};

struct NumberTraits {
  using Value = double;
  using Widget = QLineEdit;
  static void Show(QLineEdit& w, double v) { w.setText(NumberText(v)); }
  static double Read(const QLineEdit& w) { return ParseNumber(w.text()); }
  static void Watch(QLineEdit& w, std::function<void()> f) { TextTraits::Watch(w, std::move(f)); }
};

struct IntegerTraits {
  using Value = std::int32_t;
  using Widget = QLineEdit;
  static void Show(QLineEdit& w, std::int32_t v) { w.setText(QString::number(v)); }
  static std::int32_t Read(const QLineEdit& w) { return ParseInteger(w.text()); }
  static void Watch(QLineEdit& w, std::function<void()> f) { TextTraits::Watch(w, std::move(f)); }
};

struct ChoiceTraits {
  using Value = std::int32_t;
  using Widget = QComboBox;
  static void Show(QComboBox& w, std::int32_t v) { SelectChoice(w, v); }
  static std::int32_t Read(const QComboBox& w) { return SelectedChoice(w); }
  static void Watch(QComboBox& w, std::function<void()> f);
};

struct FormatTraits {
  using Value = std::string;
  using Widget = FormatEdit;
  static void Show(FormatEdit& w, const std::string& v) { w.line().setText(QString::fromStdString(v)); }
  static std::string Read(FormatEdit& w) { return w.line().text().toStdString(); }
  static void Watch(FormatEdit& w, std::function<void()> f) { TextTraits::Watch(w.line(), std::move(f)); }
};

template <class T>
struct ButtonTraits {
  using Value = T;
  using Widget = ValueButton<T>;
  static void Show(ValueButton<T>& w, const T& v) { w.setValue(v); }
  static T Read(const ValueButton<T>& w) { return w.value(); }
  static void Watch(ValueButton<T>& w, std::function<void()> f) { w.setOnEdited(std::move(f)); }
};

// --- Pages ------------------------------------------------------------------------------

// A scrollable form of bindings, one row each, with optional section headings.
class Page : public QScrollArea {
 public:
  explicit Page(const QString& objectName, QWidget* parent = nullptr);
  // Deletes the editors before the bindings that watch them.
  ~Page() override;
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  // Adds a row; the editor takes name as its objectName.
  void add(std::unique_ptr<Binding> binding, const char* name);
  // A heading between rows.
  void section(const QString& title);

  const std::vector<std::unique_ptr<Binding>>& bindings() const noexcept { return bindings_; }
  QWidget* form() const noexcept { return form_; }

 private:
  QWidget* form_;
  QFormLayout* layout_;
  std::vector<std::unique_ptr<Binding>> bindings_;
};

// The rows of one object's page, written as a table: each call names the property, its
// label, its getter and its setter (member functions of Object or callables taking it).
template <class Object>
class PageTable {
 public:
  PageTable(Page& page, std::function<Object&()> object) : page_(page), object_(std::move(object)) {}

  PageTable& section(const QString& title) {
    page_.section(title);
    return *this;
  }
  template <class G, class S>
  PageTable& check(const char* name, const QString& label, G get, S set) {
    return row<CheckTraits>(name, label, new QCheckBox, get, set);
  }
  template <class G, class S>
  PageTable& text(const char* name, const QString& label, G get, S set) {
    return row<TextTraits>(name, label, new QLineEdit, get, set);
  }
  template <class G, class S>
  PageTable& number(const char* name, const QString& label, G get, S set) {
    return row<NumberTraits>(name, label, new QLineEdit, get, set);
  }
  template <class G, class S>
  PageTable& integer(const char* name, const QString& label, G get, S set) {
    return row<IntegerTraits>(name, label, new QLineEdit, get, set);
  }
  template <class G, class S>
  PageTable& choice(const char* name, const QString& label, const Choices& choices, G get, S set) {
    auto* combo = new QComboBox;
    FillChoices(*combo, choices);
    return row<ChoiceTraits>(name, label, combo, get, set);
  }
  template <class G, class S>
  PageTable& color(const char* name, const QString& label, G get, S set) {
    return row<ButtonTraits<orvane::Color>>(name, label, MakeColorButton(nullptr), get, set);
  }
  template <class G, class S>
  PageTable& format(const char* name, const QString& label, G get, S set) {
    return row<FormatTraits>(name, label, new FormatEdit, get, set);
  }
  // A font, a line or a marker: member gives the object from the page's object.
  template <class Member>
  PageTable& font(const char* name, const QString& label, Member member) {
    return compound<FontValue>(name, label, MakeFontButton(nullptr), member);
  }
  template <class Member>
  PageTable& line(const char* name, const QString& label, Member member) {
    return compound<LineValue>(name, label, MakeLineButton(nullptr), member);
  }
  template <class Member>
  PageTable& marker(const char* name, const QString& label, Member member) {
    return compound<MarkerValue>(name, label, MakeMarkerButton(nullptr), member);
  }

 private:
  template <class Traits, class G, class S>
  PageTable& row(const char* name, const QString& label, typename Traits::Widget* widget, G get, S set) {
    using Value = typename Traits::Value;
    auto object = object_;
    std::function<Value()> getter = [object, get] { return static_cast<Value>(std::invoke(get, object())); };
    std::function<void(const Value&)> setter = [object, set](const Value& v) { std::invoke(set, object(), v); };
    page_.add(std::make_unique<FieldBinding<Traits>>(label, widget, std::move(getter), std::move(setter)), name);
    return *this;
  }
  template <class Value, class Member>
  PageTable& compound(const char* name, const QString& label, ValueButton<Value>* button, Member member) {
    auto object = object_;
    std::function<Value()> getter = [object, member] { return Value::From(std::invoke(member, object())); };
    std::function<void(const Value&)> setter = [object, member](const Value& v) {
      v.ApplyTo(std::invoke(member, object()));
    };
    using Bound = FieldBinding<ButtonTraits<Value>>;
    page_.add(std::make_unique<Bound>(label, button, std::move(getter), std::move(setter)), name);
    return *this;
  }

  Page& page_;
  std::function<Object&()> object_;
};

}  // namespace orvane::qt::pages
