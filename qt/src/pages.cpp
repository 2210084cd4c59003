// The page tables: one row per public property of each object, in the order the dialog
// applies them (an Axes or Faces master before the axes or faces it is copied into, the
// automatic range before the limits it would overwrite).

#include "pages.h"

#include <QObject>

#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/surface.h"
#include "orvane/data/data_set.h"
#include "orvane/render/caption.h"
#include "orvane/render/faces.h"
#include "orvane/render/legend.h"
#include "orvane/render/view.h"
#include "orvane/resample/resampling.h"
#include "contour_levels.h"

namespace orvane::qt::pages {

namespace {

QString tr(const char* text) { return QObject::tr(text); }

Page* NewPage(std::vector<PageEntry>& pages, const QStringList& path, QWidget* parent) {
  auto* page = new Page(path.join(QLatin1Char('/')), parent);
  pages.push_back({path, page});
  return page;
}

const Choices& PlotTypeChoices() {
  static const Choices c{{QStringLiteral("3-D"), orvPlotType3D}, {QStringLiteral("2-D"), orvPlotType2D}};
  return c;
}
const Choices& AppearanceChoices() {
  static const Choices c{{QStringLiteral("Flat"), orvFlat}, {QStringLiteral("3-D"), orv3d}};
  return c;
}
const Choices& BorderStyleChoices() {
  static const Choices c{{QStringLiteral("None"), orvNone}, {QStringLiteral("Fixed single"), orvFixedSingle}};
  return c;
}
const Choices& AutoRangeChoices() {
  static const Choices c{{QStringLiteral("Off"), orvAutoRangeOff},
                         {QStringLiteral("Exact"), orvAutoRangeExact},
                         {QStringLiteral("Rounded"), orvAutoRangeRounded}};
  return c;
}
const Choices& IntervalTypeChoices() {
  static const Choices c{{QStringLiteral("By interval count"), orvIntervalTypeByIntervalCount},
                         {QStringLiteral("By interval"), orvIntervalTypeByInterval}};
  return c;
}
const Choices& AutoSetChoices() {
  static const Choices c{{QStringLiteral("Off"), orvAutoSetOff},
                         {QStringLiteral("By interval"), orvAutoSetByInterval},
                         {QStringLiteral("By interval count"), orvAutoSetByIntervalCount}};
  return c;
}
const Choices& ColorMapChoices() {
  static const Choices c{{QStringLiteral("None (the levels' own colours)"), orvColorMapNone},
                         {QStringLiteral("User"), orvColorMapUser},
                         {QStringLiteral("Blue to red"), orvColorMapBlueRed},
                         {QStringLiteral("Red to blue"), orvColorMapRedBlue},
                         {QStringLiteral("Rainbow"), orvColorMapRainbow},
                         {QStringLiteral("Rainbow reversed"), orvColorMapRainbowReverse},
                         {QStringLiteral("Rainbow striped"), orvColorMapRainbowStriped},
                         {QStringLiteral("Zebra striped"), orvColorMapZebraStriped},
                         {QStringLiteral("Land and sea, dark"), orvColorMapLandSeaDark},
                         {QStringLiteral("Land and sea, light"), orvColorMapLandSeaLight}};
  return c;
}
const Choices& ResamplerChoices() {
  static const Choices c{{QStringLiteral("None"), orvResamplerTypeNone},
                         {QStringLiteral("Inverse distance"), orvResamplerTypeInverseDistance},
                         {QStringLiteral("Kriging"), orvResamplerTypeKriging},
                         {QStringLiteral("Natural neighbour"), orvResamplerTypeNNGridR}};
  return c;
}
const Choices& SemiVariogramChoices() {
  static const Choices c{{QStringLiteral("Linear"), orvKrigingMSVLinear},
                         {QStringLiteral("Spherical"), orvKrigingMSVSpherical},
                         {QStringLiteral("Exponential"), orvKrigingMSVExponential},
                         {QStringLiteral("Gaussian"), orvKrigingMSVGaussian}};
  return c;
}

void SurfacePage(Page& page, Surface& surface) {
  PageTable<Surface> s(page, [&surface]() -> Surface& { return surface; });
  s.section(tr("Plot"))
      .check("AutoRefresh", tr("Refresh automatically"), &Surface::AutoRefresh, &Surface::SetAutoRefresh)
      .choice("PlotType", tr("Plot type"), PlotTypeChoices(), &Surface::PlotType, &Surface::SetPlotType)
      .color("BackColor", tr("Background colour"), &Surface::BackColor, &Surface::SetBackColor)
      .color("ForeColor", tr("Text colour"), &Surface::ForeColor, &Surface::SetForeColor)
      .choice("BorderStyle", tr("Border"), BorderStyleChoices(), &Surface::BorderStyle, &Surface::SetBorderStyle)
      .choice("Appearance", tr("Border look"), AppearanceChoices(), &Surface::Appearance, &Surface::SetAppearance)
      .section(tr("View"))
      .number("Zoom", tr("Zoom"), &Surface::Zoom, &Surface::SetZoom)
      .number("RotationX", tr("Rotation X (degrees)"), &Surface::RotationX, &Surface::SetRotationX)
      .number("RotationY", tr("Rotation Y (degrees)"), &Surface::RotationY, &Surface::SetRotationY)
      .number("RotationZ", tr("Rotation Z (degrees)"), &Surface::RotationZ, &Surface::SetRotationZ)
      .number("OffsetHorizontal", tr("Horizontal offset"), &Surface::OffsetHorizontal, &Surface::SetOffsetHorizontal)
      .number("OffsetVertical", tr("Vertical offset"), &Surface::OffsetVertical, &Surface::SetOffsetVertical)
      .section(tr("Lighting"))
      .check("LightingOn", tr("Lighting on"), &Surface::LightingOn, &Surface::SetLightingOn)
      .number("LightingIntensityAmbient", tr("Ambient intensity (0 to 1)"), &Surface::LightingIntensityAmbient,
              &Surface::SetLightingIntensityAmbient)
      .number("LightingIntensitySpotlight", tr("Spotlight intensity (0 to 1)"), &Surface::LightingIntensitySpotlight,
              &Surface::SetLightingIntensitySpotlight)
      .number("LightingMaterialShininess", tr("Shininess (0 to 1)"), &Surface::LightingMaterialShininess,
              &Surface::SetLightingMaterialShininess);
  PageTable<Caption> header(page, [&surface]() -> Caption& { return surface.Header(); });
  header.section(tr("Header"))
      .text("Header.Text", tr("Header text"), &Caption::Text, &Caption::SetText)
      .check("Header.Visible", tr("Header visible"), &Caption::Visible, &Caption::SetVisible)
      .font("Header.Font", tr("Header font"), [](Caption& c) -> Font& { return c.Font(); });
  PageTable<Legend> legend(page, [&surface]() -> Legend& { return surface.Legend(); });
  legend.check("Legend.Visible", tr("Legend visible"), &Legend::Visible, &Legend::SetVisible);
}

void AxesPage(Page& page, Surface& surface) {
  PageTable<Axes> a(page, [&surface]() -> Axes& { return surface.Axes(); });
  a.check("UseMasterProperties", tr("Use these for all axes"), &Axes::UseMasterProperties,
          &Axes::SetUseMasterProperties)
      .check("KeepXYAspectRatio", tr("Keep the X:Y aspect ratio"), &Axes::KeepXYAspectRatio,
             &Axes::SetKeepXYAspectRatio)
      .section(tr("All axes"))
      .format("LabelsFormatMaster", tr("Label format"), &Axes::LabelsFormatMaster, &Axes::SetLabelsFormatMaster)
      .check("LabelsVisibleMaster", tr("Labels visible"), &Axes::LabelsVisibleMaster, &Axes::SetLabelsVisibleMaster)
      .check("TitleVisibleMaster", tr("Titles visible"), &Axes::TitleVisibleMaster, &Axes::SetTitleVisibleMaster)
      .font("LabelsFontMaster", tr("Label font"), &Axes::LabelsFontMaster)
      .font("TitleFontMaster", tr("Title font"), &Axes::TitleFontMaster)
      .line("AxisLineMaster", tr("Axis line"), &Axes::AxisLineMaster);
}

void AxisPage(Page& page, Surface& surface, Axis& (Axes::*which)() noexcept) {
  PageTable<Axis> a(page, [&surface, which]() -> Axis& { return (surface.Axes().*which)(); });
  a.section(tr("Scale"))
      .choice("AutoRangeType", tr("Automatic range"), AutoRangeChoices(), &Axis::AutoRangeType, &Axis::SetAutoRangeType)
      .number("Min", tr("Minimum"), &Axis::Min, &Axis::SetMin)
      .number("Max", tr("Maximum"), &Axis::Max, &Axis::SetMax)
      .choice("MajorIntervalType", tr("Intervals set"), IntervalTypeChoices(), &Axis::MajorIntervalType,
              &Axis::SetMajorIntervalType)
      .number("MajorInterval", tr("Major interval"), &Axis::MajorInterval, &Axis::SetMajorInterval)
      .integer("MajorIntervalCount", tr("Major interval count"), &Axis::MajorIntervalCount,
               &Axis::SetMajorIntervalCount)
      .number("Zoom", tr("Zoom"), &Axis::Zoom, &Axis::SetZoom)
      .section(tr("Title and labels (while the axes' own settings are not used for all)"))
      .text("Title", tr("Title"), &Axis::Title, &Axis::SetTitle)
      .check("TitleVisible", tr("Title visible"), &Axis::TitleVisible, &Axis::SetTitleVisible)
      .font("TitleFont", tr("Title font"), &Axis::TitleFont)
      .format("LabelsFormat", tr("Label format"), &Axis::LabelsFormat, &Axis::SetLabelsFormat)
      .check("LabelsVisible", tr("Labels visible"), &Axis::LabelsVisible, &Axis::SetLabelsVisible)
      .font("LabelsFont", tr("Label font"), &Axis::LabelsFont)
      .line("AxisLine", tr("Axis line"), &Axis::AxisLine);
}

void ContouringPage(Page& page, Surface& surface) {
  PageTable<Contouring> c(page, [&surface]() -> Contouring& { return surface.Contouring(); });
  c.choice("AutoSetContoursType", tr("Automatic levels"), AutoSetChoices(), &Contouring::AutoSetContoursType,
           &Contouring::SetAutoSetContoursType)
      .number("AutoSetInterval", tr("Level interval"), &Contouring::AutoSetInterval, &Contouring::SetAutoSetInterval)
      .integer("AutoSetIntervalCount", tr("Level interval count"), &Contouring::AutoSetIntervalCount,
               &Contouring::SetAutoSetIntervalCount)
      .choice("ColorMapType", tr("Colour map"), ColorMapChoices(), &Contouring::ColorMapType,
              &Contouring::SetColorMapType)
      .check("InterpolateColors", tr("Interpolate colours"), &Contouring::InterpolateColors,
             &Contouring::SetInterpolateColors)
      .check("ExactBands", tr("Exact band edges"), &Contouring::ExactBands, &Contouring::SetExactBands)
      .check("TiesAbove", tr("Heights on a level count as above it"), &Contouring::TiesAbove,
             &Contouring::SetTiesAbove);
  // The levels come last, after the settings that decide whether they are rebuilt.
  page.section(tr("Levels (rebuilt from the data unless automatic levels are off)"));
  auto getter = [&surface] { return LevelsOf(surface.Contouring().Contours()); };
  auto setter = [&surface](const std::vector<LevelValue>& levels) {
    ApplyLevels(levels, surface.Contouring().Contours());
  };
  page.add(std::make_unique<FieldBinding<LevelsTraits>>(tr("Levels"), new LevelsEdit, getter, setter), "Levels");
}

void FacesPage(Page& page, Surface& surface) {
  PageTable<Faces> f(page, [&surface]() -> Faces& { return surface.Faces(); });
  f.check("UseMasterProperties", tr("Use these for all faces"), &Faces::UseMasterProperties,
          &Faces::SetUseMasterProperties)
      .section(tr("All faces"))
      .check("FillVisibleMaster", tr("Filled"), &Faces::FillVisibleMaster, &Faces::SetFillVisibleMaster)
      .color("FillColorMaster", tr("Fill colour"), &Faces::FillColorMaster, &Faces::SetFillColorMaster)
      .check("MajorGridVisibleMaster", tr("Major grid visible"), &Faces::MajorGridVisibleMaster,
             &Faces::SetMajorGridVisibleMaster)
      .line("MajorGridLineMaster", tr("Major grid line"), &Faces::MajorGridLineMaster)
      .check("EdgeVisibleMaster", tr("Edges visible"), &Faces::EdgeVisibleMaster, &Faces::SetEdgeVisibleMaster)
      .line("EdgeLineMaster", tr("Edge line"), &Faces::EdgeLineMaster);
}

void FacePage(Page& page, Surface& surface, Face& (Faces::*which)() noexcept) {
  PageTable<Face> f(page, [&surface, which]() -> Face& { return (surface.Faces().*which)(); });
  f.check("FillVisible", tr("Filled"), &Face::FillVisible, &Face::SetFillVisible)
      .color("FillColor", tr("Fill colour"), &Face::FillColor, &Face::SetFillColor)
      .check("MajorGridVisible", tr("Major grid visible"), &Face::MajorGridVisible, &Face::SetMajorGridVisible)
      .line("MajorGridLine", tr("Major grid line"), &Face::MajorGridLine)
      .check("EdgeVisible", tr("Edges visible"), &Face::EdgeVisible, &Face::SetEdgeVisible)
      .line("EdgeLine", tr("Edge line"), &Face::EdgeLine);
}

void ViewPage(Page& page, Surface& surface, std::int32_t dataSet, View& (DataSet::*which)() noexcept) {
  PageTable<View> v(page, [&surface, dataSet, which]() -> View& {
    return (surface.DataSets().Item(dataSet).*which)();
  });
  v.check("Visible", tr("Visible"), &View::Visible, &View::SetVisible)
      .check("ContourFillVisible", tr("Filled contours"), &View::ContourFillVisible, &View::SetContourFillVisible)
      .check("TransparencyOn", tr("Transparent"), &View::TransparencyOn, &View::SetTransparencyOn)
      .number("Transparency", tr("Transparency (1 opaque, 0 clear)"), &View::Transparency, &View::SetTransparency)
      .section(tr("Lines"))
      .check("ContourLinesVisible", tr("Contour lines visible"), &View::ContourLinesVisible,
             &View::SetContourLinesVisible)
      .check("UseMasterProperties", tr("One format for all contour lines"), &View::UseMasterProperties,
             &View::SetUseMasterProperties)
      .line("ContourLinesMaster", tr("Contour line"), [](View& x) -> Line& { return x.ContourLinesMaster(); })
      .check("MeshVisible", tr("Mesh visible"), &View::MeshVisible, &View::SetMeshVisible)
      .line("MeshLine", tr("Mesh line"), [](View& x) -> Line& { return x.MeshLine(); })
      .check("DataHullVisible", tr("Data hull visible"), &View::DataHullVisible, &View::SetDataHullVisible)
      .line("DataHullLine", tr("Data hull line"), [](View& x) -> Line& { return x.DataHullLine(); })
      .check("UserHullVisible", tr("User hull visible"), &View::UserHullVisible, &View::SetUserHullVisible)
      .line("UserHullLine", tr("User hull line"), [](View& x) -> Line& { return x.UserHullLine(); })
      .check("UserHullClipping", tr("Clip to the user hull"), &View::UserHullClipping, &View::SetUserHullClipping)
      .section(tr("Data markers"))
      .marker("DataMarkersMaster", tr("Data markers"), [](View& x) -> Marker& { return x.DataMarkersMaster(); })
      .section(tr("Contour labels"))
      .check("ContourLabelsVisible", tr("Labels visible"), &View::ContourLabelsVisible, &View::SetContourLabelsVisible)
      .check("ContourLabelsRotation", tr("Rotated along the line"), &View::ContourLabelsRotation,
             &View::SetContourLabelsRotation)
      .check("ContourLabelsFillVisible", tr("Filled"), &View::ContourLabelsFillVisible,
             &View::SetContourLabelsFillVisible)
      .color("ContourLabelsFillColor", tr("Fill colour"), &View::ContourLabelsFillColor,
             &View::SetContourLabelsFillColor)
      .check("ContourLabelsEdgeVisible", tr("Border visible"), &View::ContourLabelsEdgeVisible,
             &View::SetContourLabelsEdgeVisible)
      .line("ContourLabelsEdgeLine", tr("Border line"), [](View& x) -> Line& { return x.ContourLabelsEdgeLine(); })
      .integer("ContourLabelsDensity", tr("Density"), &View::ContourLabelsDensity, &View::SetContourLabelsDensity)
      .integer("ContourLabelsLevelSkipping", tr("Levels skipped"), &View::ContourLabelsLevelSkipping,
               &View::SetContourLabelsLevelSkipping);
}

void ResamplingPage(Page& page, Surface& surface, std::int32_t dataSet) {
  auto resampling = [&surface, dataSet]() -> Resampling& { return surface.DataSets().Item(dataSet).Resampling(); };
  PageTable<Resampling> r(page, resampling);
  r.choice("ResamplerType", tr("Resampler"), ResamplerChoices(), &Resampling::ResamplerType,
           &Resampling::SetResamplerType)
      .integer("IntervalCount", tr("Interval count"), &Resampling::IntervalCount, &Resampling::SetIntervalCount)
      .check("AutoRange", tr("Automatic range"), &Resampling::AutoRange, &Resampling::SetAutoRange)
      .number("XMin", tr("X minimum"), &Resampling::XMin, &Resampling::SetXMin)
      .number("XMax", tr("X maximum"), &Resampling::XMax, &Resampling::SetXMax)
      .number("YMin", tr("Y minimum"), &Resampling::YMin, &Resampling::SetYMin)
      .number("YMax", tr("Y maximum"), &Resampling::YMax, &Resampling::SetYMax);
  PageTable<InverseDistance> idw(page, [resampling]() -> InverseDistance& { return resampling().InverseDistance(); });
  idw.section(tr("Inverse distance"))
      .number("InverseDistance.WeightingPower", tr("Weighting power"), &InverseDistance::WeightingPower,
              &InverseDistance::SetWeightingPower);
  PageTable<Kriging> k(page, [resampling]() -> Kriging& { return resampling().Kriging(); });
  k.section(tr("Kriging"))
      .choice("Kriging.ModelSemiVariogram", tr("Semi-variogram model"), SemiVariogramChoices(),
              &Kriging::ModelSemiVariogram, &Kriging::SetModelSemiVariogram)
      .number("Kriging.Nugget", tr("Nugget"), &Kriging::Nugget, &Kriging::SetNugget)
      .number("Kriging.Sill", tr("Sill"), &Kriging::Sill, &Kriging::SetSill)
      .check("Kriging.AutoSetRange", tr("Automatic range"), &Kriging::AutoSetRange, &Kriging::SetAutoSetRange)
      .number("Kriging.Range", tr("Range"), &Kriging::Range, &Kriging::SetRange)
      .check("Kriging.BlockMode", tr("Block mode"), &Kriging::BlockMode, &Kriging::SetBlockMode);
  PageTable<NNGridR> nn(page, [resampling]() -> NNGridR& { return resampling().NNGridR(); });
  nn.section(tr("Natural neighbour"))
      .number("NNGridR.Taughtness", tr("Taughtness"), &NNGridR::Taughtness, &NNGridR::SetTaughtness)
      .check("NNGridR.UseGradients", tr("Blended gradients"), &NNGridR::UseGradients, &NNGridR::SetUseGradients);
}

}  // namespace

std::vector<PageEntry> MakePages(Surface& surface, QWidget* parent) {
  std::vector<PageEntry> pages;
  const QString axes = QStringLiteral("Axes");
  const QString faces = QStringLiteral("Faces");
  const QString view = QStringLiteral("View");
  const QString resampling = QStringLiteral("Resampling");

  SurfacePage(*NewPage(pages, {QStringLiteral("Surface")}, parent), surface);
  AxesPage(*NewPage(pages, {axes}, parent), surface);
  AxisPage(*NewPage(pages, {axes, QStringLiteral("Axis X")}, parent), surface, &Axes::XAxis);
  AxisPage(*NewPage(pages, {axes, QStringLiteral("Axis Y")}, parent), surface, &Axes::YAxis);
  AxisPage(*NewPage(pages, {axes, QStringLiteral("Axis Z")}, parent), surface, &Axes::ZAxis);
  ContouringPage(*NewPage(pages, {QStringLiteral("Contouring")}, parent), surface);
  FacesPage(*NewPage(pages, {faces}, parent), surface);
  FacePage(*NewPage(pages, {faces, QStringLiteral("Face XY")}, parent), surface, &Faces::XYFace);
  FacePage(*NewPage(pages, {faces, QStringLiteral("Face XZ")}, parent), surface, &Faces::XZFace);
  FacePage(*NewPage(pages, {faces, QStringLiteral("Face YZ")}, parent), surface, &Faces::YZFace);
  const std::int32_t count = surface.DataSets().Count();
  for (std::int32_t i = 0; i < count; ++i) {
    const QString dataSet = QStringLiteral("Data set %1").arg(i + 1);
    ViewPage(*NewPage(pages, {view, dataSet, QStringLiteral("Main")}, parent), surface, i, &DataSet::ViewMain);
    ViewPage(*NewPage(pages, {view, dataSet, QStringLiteral("Top")}, parent), surface, i, &DataSet::ViewTop);
    ViewPage(*NewPage(pages, {view, dataSet, QStringLiteral("Bottom")}, parent), surface, i, &DataSet::ViewBottom);
  }
  for (std::int32_t i = 0; i < count; ++i) {
    ResamplingPage(*NewPage(pages, {resampling, QStringLiteral("Data set %1").arg(i + 1)}, parent), surface, i);
  }
  return pages;
}

}  // namespace orvane::qt::pages
