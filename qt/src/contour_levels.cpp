// The contour levels table of the Contouring page.

#include "contour_levels.h"

#include <QColorDialog>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>
#include <limits>
#include <set>

#include "orvane/contour/contouring.h"

namespace orvane::qt::pages {

namespace {

enum Column { kValue, kColor, kColorBelow, kStyle, kWidth, kColumns };

// Shows color in a colour cell and keeps it as the cell's data.
void SetCellColor(QTableWidgetItem& item, orvane::Color color) {
  item.setText(ToQColor(color).name(QColor::HexRgb).toUpper());
  item.setData(Qt::DecorationRole, ToQColor(color));
  item.setData(Qt::UserRole, static_cast<qulonglong>(color));
}

QTableWidgetItem* ColorItem(orvane::Color color) {
  auto* item = new QTableWidgetItem;
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);  // edited through the colour dialog
  SetCellColor(*item, color);
  return item;
}

orvane::Color ColorOf(const QTableWidgetItem* item) {
  return static_cast<orvane::Color>(item->data(Qt::UserRole).toULongLong());
}

}  // namespace

std::vector<LevelValue> LevelsOf(const orvane::Contours& contours) {
  std::vector<LevelValue> levels;
  for (std::int32_t i = 0; i < contours.Count(); ++i) {
    const auto level = contours.Item(i);
    levels.push_back({level->Value(), level->Color(), level->ColorBelow(), level->LineDrawStyle(), level->LineWidth()});
  }
  return levels;
}

void ApplyLevels(const std::vector<LevelValue>& levels, orvane::Contours& contours) {
  const std::vector<LevelValue> current = LevelsOf(contours);
  const bool sameValues = std::equal(levels.begin(), levels.end(), current.begin(), current.end(),
                                     [](const LevelValue& a, const LevelValue& b) { return a.value == b.value; });
  std::vector<LevelValue> wanted = levels;
  if (!sameValues) {
    // Add keeps the levels ascending (equal values in the order added): sorting first
    // makes row i level i.
    std::stable_sort(wanted.begin(), wanted.end(),
                     [](const LevelValue& a, const LevelValue& b) { return a.value < b.value; });
    contours.RemoveAll();
    for (const LevelValue& level : wanted) {
      contours.Add(level.value, static_cast<std::int64_t>(level.color), static_cast<std::int64_t>(level.colorBelow));
    }
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const auto level = contours.Item(static_cast<std::int32_t>(i));
    level->SetColor(wanted[i].color);
    level->SetColorBelow(wanted[i].colorBelow);
    level->SetLineDrawStyle(wanted[i].lineDrawStyle);
    level->SetLineWidth(wanted[i].lineWidth);
  }
}

LevelsEdit::LevelsEdit(QWidget* parent) : QWidget(parent), table_(new QTableWidget(0, kColumns, this)) {
  table_->setObjectName(QStringLiteral("levelsTable"));
  table_->setHorizontalHeaderLabels(
      {tr("Value"), tr("Colour"), tr("Colour below"), tr("Line style"), tr("Line width")});
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->verticalHeader()->setVisible(false);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setMinimumHeight(180);

  auto* add = new QPushButton(tr("Add level"), this);
  add->setObjectName(QStringLiteral("addLevel"));
  auto* remove = new QPushButton(tr("Remove level"), this);
  remove->setObjectName(QStringLiteral("removeLevel"));
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(add);
  buttons->addWidget(remove);
  buttons->addStretch(1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(table_);
  layout->addLayout(buttons);

  connect(table_, &QTableWidget::itemChanged, this, [this] { edited(); });
  connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
    if (column != kColor && column != kColorBelow) return;
    QTableWidgetItem* item = table_->item(row, column);
    const QColor chosen = QColorDialog::getColor(ToQColor(ColorOf(item)), this, tr("Colour"));
    if (chosen.isValid()) SetCellColor(*item, FromQColor(chosen));
  });
  connect(add, &QPushButton::clicked, this, [this] {
    // One step above the last level, its colours and line.
    LevelValue level;
    try {
      const std::vector<LevelValue> rows = levels();
      if (!rows.empty()) {
        level = rows.back();
        level.value += 1.0;
      }
    } catch (const std::exception&) {
      // A row holds text that is no number: the new row starts from the defaults, and
      // Apply reports the bad row.
    }
    addRow(level);
    edited();
  });
  connect(remove, &QPushButton::clicked, this, [this] {
    std::set<int> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) rows.insert(index.row());
    if (rows.empty() && table_->rowCount() > 0) rows.insert(table_->rowCount() - 1);
    for (auto it = rows.rbegin(); it != rows.rend(); ++it) table_->removeRow(*it);
    if (!rows.empty()) edited();
  });
}

void LevelsEdit::addRow(const LevelValue& level) {
  const QSignalBlocker quiet(table_);
  const int row = table_->rowCount();
  table_->insertRow(row);
  table_->setItem(row, kValue, new QTableWidgetItem(NumberText(level.value)));
  table_->setItem(row, kColor, ColorItem(level.color));
  table_->setItem(row, kColorBelow, ColorItem(level.colorBelow));
  auto* style = new QComboBox;
  FillChoices(*style, DrawStyleChoices());
  SelectChoice(*style, level.lineDrawStyle);
  connect(style, &QComboBox::currentIndexChanged, this, [this] { edited(); });
  table_->setCellWidget(row, kStyle, style);
  auto* width = new QSpinBox;
  width->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
  width->setValue(level.lineWidth);
  connect(width, &QSpinBox::valueChanged, this, [this] { edited(); });
  table_->setCellWidget(row, kWidth, width);
}

void LevelsEdit::setLevels(const std::vector<LevelValue>& rows) {
  table_->setRowCount(0);
  for (const LevelValue& level : rows) addRow(level);
}

std::vector<LevelValue> LevelsEdit::levels() const {
  std::vector<LevelValue> rows;
  for (int row = 0; row < table_->rowCount(); ++row) {
    LevelValue level;
    level.value = ParseNumber(table_->item(row, kValue)->text());
    level.color = ColorOf(table_->item(row, kColor));
    level.colorBelow = ColorOf(table_->item(row, kColorBelow));
    level.lineDrawStyle = SelectedChoice(*static_cast<QComboBox*>(table_->cellWidget(row, kStyle)));
    level.lineWidth = static_cast<QSpinBox*>(table_->cellWidget(row, kWidth))->value();
    rows.push_back(level);
  }
  return rows;
}

}  // namespace orvane::qt::pages
