#include "plot.h"

#include "gl.h"
#include "orvane/data/data_sets.h"
#include "orvane/render/view.h"

namespace orvane::detail {

View& ViewOfKind(DataSet& data, int kind) {
  switch (kind) {
    case 1: return data.ViewTop();
    case 2: return data.ViewBottom();
    default: return data.ViewMain();
  }
}

bool Plot::AnyViewToDraw(DataSets& sets) const {
  for (std::int32_t i = 0; i < sets.Count(); ++i) {
    if (ViewOfKind(sets.Item(i), kind_).Visible()) return true;
  }
  return false;
}

void Plot::DrawViews(DataSets& sets, const ViewContext& context, const std::function<void(int)>& labels,
                     bool compile) {
  if (compile) {
    if (!listValid_) BuildList(sets, context);
    glCallList(displayList_);
  } else {
    DrawPasses(sets, context);
  }
  if (!labels) return;
  for (std::int32_t i = 0; i < sets.Count(); ++i) {
    const View& view = ViewOfKind(sets.Item(i), kind_);
    if (view.Visible() && view.ContourLabelsVisible()) {
      labels(kind_);
      return;
    }
  }
}

void Plot::BuildList(DataSets& sets, const ViewContext& context) {
  if (displayList_ != 0) glDeleteLists(displayList_, 1);
  displayList_ = glGenLists(1);
  glNewList(displayList_, GL_COMPILE);
  DrawPasses(sets, context);
  glEndList();
  listValid_ = true;
  ++builds_;
}

void Plot::DrawPasses(DataSets& sets, const ViewContext& context) const {
  // Opaque views first, then the transparent ones over them, in collection order.
  for (const bool transparent : {false, true}) {
    for (std::int32_t i = 0; i < sets.Count(); ++i) {
      DataSet& data = sets.Item(i);
      const View& view = ViewOfKind(data, kind_);
      if (view.Visible() && view.TransparencyOn() == transparent) DrawView(data, view, context);
    }
  }
  // A map shows every data point and hull: they go over all the fills.
  if (context.is3D) return;
  for (std::int32_t i = 0; i < sets.Count(); ++i) {
    DataSet& data = sets.Item(i);
    const View& view = ViewOfKind(data, kind_);
    if (view.Visible()) DrawOverlays(data, view, context);
  }
}

void Plot::Invalidate() {
  if (displayList_ != 0) glDeleteLists(displayList_, 1);
  displayList_ = 0;
  listValid_ = false;
}

}  // namespace orvane::detail
