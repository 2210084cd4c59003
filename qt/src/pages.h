#pragma once

// The pages of the property dialog, each a table of the bindings of one object.

#include <QStringList>

#include <vector>

#include "property_editors.h"

namespace orvane {
class Surface;
}

namespace orvane::qt::pages {

// One page and where it sits in the tree ({"Axes", "Axis X"}).
struct PageEntry {
  QStringList path;
  Page* page = nullptr;
};

// Every page of the control's objects, in tree order, made as children of parent: the
// surface, the axes and each axis, contouring, the faces and each face, the three views of
// each data set and each data set's resampling.
std::vector<PageEntry> MakePages(orvane::Surface& surface, QWidget* parent);

}  // namespace orvane::qt::pages
