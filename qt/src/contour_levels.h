#pragma once

// The contour levels on the Contouring page: a table with one row per level (value,
// colour, colour below, line style, line width) and buttons to add and remove rows, bound
// to the Contours collection as one value.

#include <QWidget>

#include <cstdint>
#include <functional>
#include <vector>

#include "orvane/core/color.h"
#include "property_editors.h"

class QTableWidget;

namespace orvane {
class Contours;
}

namespace orvane::qt::pages {

// One level as the table holds it.
struct LevelValue {
  double value = 0.0;
  orvane::Color color = 0;
  orvane::Color colorBelow = 0;
  std::int32_t lineDrawStyle = orvDrawStyleSolid;
  std::int32_t lineWidth = 1;
  friend bool operator==(const LevelValue&, const LevelValue&) = default;
};

std::vector<LevelValue> LevelsOf(const orvane::Contours& contours);
// Makes the collection hold exactly these levels: when the values are the collection's
// own, each level's colours and line are let in place; otherwise the levels are replaced
// (sorted by value, as Add keeps them).
void ApplyLevels(const std::vector<LevelValue>& levels, orvane::Contours& contours);

// The table ("levelsTable") with "Add level" ("addLevel") and "Remove level"
// ("removeLevel"). A colour cell holds its colour as Qt::UserRole data and opens the
// colour dialog on a double click.
class LevelsEdit : public QWidget {
 public:
  explicit LevelsEdit(QWidget* parent = nullptr);

  void setLevels(const std::vector<LevelValue>& levels);
  // The rows as levels; raises error 5 for a value that is no number.
  std::vector<LevelValue> levels() const;
  void setOnEdited(std::function<void()> onEdited) { onEdited_ = std::move(onEdited); }

 private:
  void addRow(const LevelValue& level);
  void edited() {
    if (onEdited_) onEdited_();
  }

  QTableWidget* table_;
  std::function<void()> onEdited_;
};

struct LevelsTraits {
  using Value = std::vector<LevelValue>;
  using Widget = LevelsEdit;
  static void Show(LevelsEdit& w, const Value& v) { w.setLevels(v); }
  static Value Read(const LevelsEdit& w) { return w.levels(); }
  static void Watch(LevelsEdit& w, std::function<void()> f) { w.setOnEdited(std::move(f)); }
};

}  // namespace orvane::qt::pages
