// PropertyPagesDialog: the tree of pages, the page shown, the error line and the buttons,
// and what Apply, OK and Cancel do with the control.
//
// The pages are made once, when the dialog opens, from the objects the control has then
// (one set of view and resampling pages per data set). Every editor loads the control's
// value; an edit only marks its binding. Apply goes through the pages in tree order and
// lets each edited value on the control; whatever the setter raises is collected with the
// page and the row, and afterwards every editor loads again, so a refused value shows the
// old one and a value the control changed on the way (clamped, rounded, overruled by a
// master) shows what was stored. Cancel puts back the State (formatting and data) taken
// when the dialog opened, so that nothing an Apply did survives it.

#include "orvane/qt/property_pages.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <cstdint>
#include <exception>
#include <vector>

#include "orvane/control/surface.h"
#include "orvane/core/error.h"
#include "pages.h"

namespace orvane::qt {

namespace {

constexpr int kPageRole = Qt::UserRole;  // a tree item's index into the stack, or -1

QString Describe(const std::exception_ptr& raised) {
  try {
    std::rethrow_exception(raised);
  } catch (const orvane::Error& e) {
    return QString::fromStdString(e.Description());
  } catch (const std::exception& e) {
    return QString::fromUtf8(e.what());
  } catch (...) {
    return QObject::tr("An unknown error occurred.");
  }
}

QString PathOf(const QTreeWidgetItem* item) {
  QStringList parts;
  for (; item != nullptr; item = item->parent()) parts.prepend(item->text(0));
  return parts.join(QLatin1Char('/'));
}

}  // namespace

struct PropertyPagesDialog::Impl {
  orvane::Surface& surface;
  std::vector<pages::PageEntry> pages;
  QTreeWidget* tree = nullptr;
  QStackedWidget* stack = nullptr;
  QLabel* errors = nullptr;
  std::vector<std::uint8_t> opening;  // the control's State when the dialog opened
  bool openingTaken = false;
  bool applied = false;  // a value was let on the control since the dialog opened

  explicit Impl(orvane::Surface& s) : surface(s) {}

  // Every editor shows the control's value; what cannot be read is reported.
  void load(QStringList& problems) {
    for (const pages::PageEntry& entry : pages) {
      for (const auto& binding : entry.page->bindings()) {
        try {
          binding->load();
        } catch (...) {
          problems << QObject::tr("%1, %2: %3").arg(entry.path.join(QLatin1Char('/')), binding->label(),
                                                   Describe(std::current_exception()));
        }
      }
    }
  }

  void showErrors(const QStringList& lines) {
    errors->setText(lines.join(QLatin1Char('\n')));
    errors->setVisible(!lines.isEmpty());
  }

  // The item of a tree node; a node without a page of its own shows its first child's.
  int pageIndex(const QTreeWidgetItem* item) const {
    while (item != nullptr) {
      const int index = item->data(0, kPageRole).toInt();
      if (index >= 0) return index;
      item = item->childCount() > 0 ? item->child(0) : nullptr;
    }
    return -1;
  }

  // The tree node at path, made (with its parents) when missing.
  QTreeWidgetItem* node(const QStringList& path) {
    QTreeWidgetItem* parent = nullptr;
    for (const QString& name : path) {
      QTreeWidgetItem* found = nullptr;
      const int count = parent ? parent->childCount() : tree->topLevelItemCount();
      for (int i = 0; i < count && found == nullptr; ++i) {
        QTreeWidgetItem* child = parent ? parent->child(i) : tree->topLevelItem(i);
        if (child->text(0) == name) found = child;
      }
      if (found == nullptr) {
        found = parent ? new QTreeWidgetItem(parent, {name}) : new QTreeWidgetItem(tree, {name});
        found->setData(0, kPageRole, -1);
      }
      parent = found;
    }
    return parent;
  }
};

PropertyPagesDialog::PropertyPagesDialog(orvane::Surface& surface, QWidget* parent)
    : QDialog(parent), impl_(std::make_unique<Impl>(surface)) {
  setObjectName(QStringLiteral("orvanePropertyPages"));
  setWindowTitle(tr("Properties"));
  Impl& d = *impl_;

  d.tree = new QTreeWidget(this);
  d.tree->setObjectName(QStringLiteral("pageTree"));
  d.tree->setHeaderHidden(true);
  d.tree->setColumnCount(1);
  d.tree->setMinimumWidth(170);
  d.stack = new QStackedWidget(this);
  d.stack->setObjectName(QStringLiteral("pageStack"));
  d.errors = new QLabel(this);
  d.errors->setObjectName(QStringLiteral("errorLabel"));
  d.errors->setWordWrap(true);
  d.errors->setTextFormat(Qt::PlainText);
  d.errors->setStyleSheet(QStringLiteral("color: #b00020;"));
  d.errors->setVisible(false);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply, this);
  buttons->setObjectName(QStringLiteral("buttons"));

  auto* panes = new QHBoxLayout;
  panes->addWidget(d.tree, 0);
  panes->addWidget(d.stack, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(panes, 1);
  layout->addWidget(d.errors);
  layout->addWidget(buttons);

  d.pages = pages::MakePages(surface, d.stack);
  for (std::size_t i = 0; i < d.pages.size(); ++i) {
    const int index = d.stack->addWidget(d.pages[i].page);
    d.node(d.pages[i].path)->setData(0, kPageRole, index);
  }
  d.tree->expandAll();

  connect(d.tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    const int index = impl_->pageIndex(item);
    if (index >= 0) impl_->stack->setCurrentIndex(index);
  });
  connect(buttons, &QDialogButtonBox::accepted, this, &PropertyPagesDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &PropertyPagesDialog::reject);
  connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, [this] { apply(); });

  QStringList problems;
  try {
    d.opening = surface.State(orvStateTypeFormattingAndData);
    d.openingTaken = true;
  } catch (...) {
    problems << tr("Cancel cannot undo what is applied: %1").arg(Describe(std::current_exception()));
  }
  d.load(problems);
  d.showErrors(problems);
  d.tree->setCurrentItem(d.tree->topLevelItem(0));
  resize(880, 600);
}

PropertyPagesDialog::~PropertyPagesDialog() {
  // impl_ goes before the base class deletes the children: the tree must not call into it
  // on its way out, and the pages (with their bindings) go while it is whole.
  disconnect(impl_->tree, nullptr, this, nullptr);
  delete impl_->stack;
}

bool PropertyPagesDialog::showPage(const QString& pathOrName) {
  const QString wanted = pathOrName.trimmed();
  for (QTreeWidgetItemIterator it(impl_->tree); *it != nullptr; ++it) {
    QTreeWidgetItem* item = *it;
    if (PathOf(item).compare(wanted, Qt::CaseInsensitive) == 0 ||
        item->text(0).compare(wanted, Qt::CaseInsensitive) == 0) {
      impl_->tree->setCurrentItem(item);
      return true;
    }
  }
  return false;
}

QString PropertyPagesDialog::currentPage() const { return PathOf(impl_->tree->currentItem()); }

bool PropertyPagesDialog::apply() {
  Impl& d = *impl_;
  QStringList problems;
  bool attempted = false;
  for (const pages::PageEntry& entry : d.pages) {
    for (const auto& binding : entry.page->bindings()) {
      if (!binding->edited()) continue;
      attempted = true;
      try {
        binding->apply();
      } catch (...) {
        problems << tr("%1, %2: %3").arg(entry.path.join(QLatin1Char('/')), binding->label(),
                                         Describe(std::current_exception()));
      }
    }
  }
  if (attempted) {
    // Even a refused let may have stored something first (some do): Cancel must undo.
    d.applied = true;
    try {
      d.surface.Refresh();
    } catch (...) {
      problems << Describe(std::current_exception());
    }
  }
  d.load(problems);
  d.showErrors(problems);
  return problems.isEmpty();
}

QString PropertyPagesDialog::errorText() const { return impl_->errors->text(); }

void PropertyPagesDialog::accept() {
  if (apply()) QDialog::accept();
}

void PropertyPagesDialog::reject() {
  Impl& d = *impl_;
  if (d.applied && d.openingTaken) {
    try {
      d.surface.SetState(d.opening, orvStateTypeFormattingAndData);
      d.applied = false;
    } catch (...) {
      qWarning("orvane: the properties could not be put back: %s", qUtf8Printable(Describe(std::current_exception())));
    }
  }
  QDialog::reject();
}

}  // namespace orvane::qt
