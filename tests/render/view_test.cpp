#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "orvane/contour/contouring.h"
#include "orvane/core/color.h"
#include "orvane/core/property_bag.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"
#include "render/view_drawing.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> Keys(const PropertyBag& bag) {
  std::vector<std::string> keys;
  for (const auto& item : bag.Items()) keys.push_back(item.first);
  return keys;
}

// ---------------------------------------------------------------------------------------
// Marker

TEST(Marker, LetsRaiseTheirNamesOnlyOnChangeAndTheEdgeLineBubbles) {
  Marker marker;
  EventRecorder events(marker.PropertyChanged);
  marker.SetVisible(false);
  marker.SetVisible(true);
  marker.SetShape(orvMarkerShape3DCube);
  marker.SetShape(orvMarkerShape2DCross);
  marker.SetSize(3.0);
  marker.SetSize(0.0);  // no marker at all, but a legal size
  marker.SetFillVisible(false);
  marker.SetFillColor(0x00FFFF);
  marker.SetFillColor(Rgb(1, 2, 3));
  marker.SetEdgeVisible(false);
  marker.EdgeLine().SetWidth(2);
  marker.EdgeLine().SetDrawStyle(orvDrawStyleDot);
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"Visible", "Shape", "Size", "FillVisible", "FillColor",
                                      "EdgeVisible", "EdgeLine.Width", "EdgeLine.DrawStyle"}));
  EXPECT_EQ(marker.Shape(), orvMarkerShape2DCross);
  EXPECT_EQ(marker.Size(), 0.0);
}

TEST(Marker, EveryShapeConstantIsAcceptedAndOtherShapesOrSizesAreRefusedChangingNothing) {
  Marker marker;
  const std::vector<std::int32_t> shapes{orvMarkerShape3DPyramid, orvMarkerShape2DSquare, orvMarkerShape2DTriangle,
                                         orvMarkerShape2DCircle,  orvMarkerShape2DPlus,   orvMarkerShape2DCross,
                                         orvMarkerShape3DCube};
  EXPECT_EQ(shapes, (std::vector<std::int32_t>{1, 10, 11, 12, 13, 14, 0}));  // the stored values
  for (std::int32_t shape : shapes) {
    marker.SetShape(shape);
    EXPECT_EQ(marker.Shape(), shape);
  }
  marker.SetShape(orvMarkerShape2DCircle);
  marker.SetSize(7.5);
  EventRecorder events(marker.PropertyChanged);
  for (std::int32_t bad : {2, 9, 15, -1, 100, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_ORVANE_ERROR(marker.SetShape(bad), 5, "Orvada.Marker",
                        "Invalid procedure call or argument")
        << bad;
  }
  for (double bad : {kNaN, kInfinity, -kInfinity, -1e-300, -1.0}) {
    EXPECT_ORVANE_ERROR(marker.SetSize(bad), 5, "Orvada.Marker",
                        "Size must be a finite number of 0 or more.")
        << bad;
  }
  EXPECT_EQ(marker.Shape(), orvMarkerShape2DCircle);
  EXPECT_EQ(marker.Size(), 7.5);
  EXPECT_TRUE(events.names.empty());
  marker.SetSize(1e300);
  EXPECT_EQ(events.names, std::vector<std::string>{"Size"});
}

// ---------------------------------------------------------------------------------------
// View

TEST(View, NewViewHasTheDocumentedDefaults) {
  const View view;
  EXPECT_TRUE(view.Visible());
  EXPECT_TRUE(view.UseMasterProperties());
  EXPECT_TRUE(view.ContourFillVisible());
  EXPECT_TRUE(view.ContourLinesVisible());
  EXPECT_FALSE(view.MeshVisible());
  EXPECT_TRUE(view.DataHullVisible());
  EXPECT_FALSE(view.UserHullVisible());
  EXPECT_FALSE(view.UserHullClipping());
  EXPECT_FALSE(view.TransparencyOn());
  EXPECT_EQ(view.Transparency(), 0.5);
  EXPECT_FALSE(view.ContourLabelsVisible());
  EXPECT_TRUE(view.ContourLabelsRotation());
  EXPECT_TRUE(view.ContourLabelsEdgeVisible());
  EXPECT_TRUE(view.ContourLabelsFillVisible());
  EXPECT_EQ(view.ContourLabelsFillColor(), 0x00FFFFu);
  EXPECT_EQ(view.ContourLabelsDensity(), 4);
  EXPECT_EQ(view.ContourLabelsLevelSkipping(), 0);
  for (const Line* line : {&view.ContourLinesMaster(), &view.MeshLine(), &view.DataHullLine(),
                           &view.UserHullLine(), &view.ContourLabelsEdgeLine()}) {
    EXPECT_EQ(line->Color(), 0u);
    EXPECT_EQ(line->DrawStyle(), orvDrawStyleSolid);
    EXPECT_EQ(line->Width(), 1);
  }
  const Marker& marker = view.DataMarkersMaster();  // a hidden yellow cube of size 3
  EXPECT_FALSE(marker.Visible());
  EXPECT_EQ(marker.Shape(), orvMarkerShape3DCube);
  EXPECT_EQ(marker.Size(), 3.0);
  EXPECT_TRUE(marker.FillVisible() && marker.EdgeVisible());
  EXPECT_EQ(marker.FillColor(), 0x00FFFFu);
}

// A let of each of the view's own properties to a value other than its default, with the
// name the property is stored under.
const std::vector<std::pair<std::function<void(View&)>, std::string>>& Lets() {
  static const std::vector<std::pair<std::function<void(View&)>, std::string>> lets = {
      {[](View& v) { v.SetVisible(false); }, "Visible"},
      {[](View& v) { v.SetUseMasterProperties(false); }, "UseMasterProperties"},
      {[](View& v) { v.SetContourFillVisible(false); }, "ContourFillVisible"},
      {[](View& v) { v.SetContourLinesVisible(false); }, "ContourLinesVisible"},
      {[](View& v) { v.SetMeshVisible(true); }, "MeshVisible"},
      {[](View& v) { v.SetDataHullVisible(false); }, "DataHullVisible"},
      {[](View& v) { v.SetUserHullVisible(true); }, "UserHullVisible"},
      {[](View& v) { v.SetUserHullClipping(true); }, "ClipToUserHull"},
      {[](View& v) { v.SetTransparencyOn(true); }, "TransparencyOn"},
      {[](View& v) { v.SetTransparency(0.125); }, "Transparency"},
      {[](View& v) { v.SetContourLabelsVisible(true); }, "ContourLabelsVisible"},
      {[](View& v) { v.SetContourLabelsRotation(false); }, "ContourLabelRotation"},
      {[](View& v) { v.SetContourLabelsEdgeVisible(false); }, "ContourLabelEdgeVisible"},
      {[](View& v) { v.SetContourLabelsFillVisible(false); }, "ContourLabelFillVisible"},
      {[](View& v) { v.SetContourLabelsFillColor(0x80FF00FFu); }, "ContourLabelColor"},
      {[](View& v) { v.SetContourLabelsDensity(0); }, "ContourLabelDensity"},
      {[](View& v) { v.SetContourLabelsLevelSkipping(2); }, "ContourLabelLevelSkipping"},
  };
  return lets;
}

// Each let with a new value raises the name the property is stored under, once; the same
// value again raises nothing.
TEST(View, EachLetRaisesItsStoredNameOnceAndNothingWhenUnchanged) {
  for (const auto& [let, name] : Lets()) {
    View view;
    EventRecorder events(view.PropertyChanged);
    let(view);
    let(view);
    EXPECT_EQ(events.names, std::vector<std::string>{name});
  }
}

TEST(View, SubObjectChangesBubbleUnderTheirStoredPrefixes) {
  View view;
  EventRecorder events(view.PropertyChanged);
  view.MeshLine().SetColor(Rgb(1, 1, 1));
  view.ContourLinesMaster().SetWidth(2);
  view.ContourLabelsEdgeLine().SetDrawStyle(orvDrawStyleDash);
  view.DataHullLine().SetColor(Rgb(2, 2, 2));
  view.UserHullLine().SetWidth(0);
  view.DataMarkersMaster().SetVisible(true);
  view.DataMarkersMaster().EdgeLine().SetColor(Rgb(3, 3, 3));
  view.MeshLine().SetColor(Rgb(1, 1, 1));  // unchanged: nothing
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"MeshLine.Color", "ContourLinesMaster.Width",
                                      "ContourLabelsEdgeLine.DrawStyle", "DataHullLine.Color",
                                      "UserHullLine.Width", "DataMarkerMaster.Visible",
                                      "DataMarkerMaster.EdgeLine.Color"}));
}

TEST(View, RefusedValuesKeepTheOldOneAndRaiseNothing) {
  View view;
  view.SetTransparency(0.75);
  view.SetContourLabelsDensity(6);
  view.SetContourLabelsLevelSkipping(1);
  EventRecorder events(view.PropertyChanged);
  const std::string standard = "Invalid procedure call or argument";
  EXPECT_ORVANE_ERROR(view.SetContourLabelsDensity(-1), 5, "Orvada.View", standard);
  EXPECT_ORVANE_ERROR(view.SetContourLabelsLevelSkipping(-1), 5, "Orvada.View", standard);
  EXPECT_ORVANE_ERROR(view.SetContourLabelsLevelSkipping(std::numeric_limits<std::int32_t>::min()),
                      5, "Orvada.View", standard);
  for (double bad : {1.0000001, -1e-300, -0.5, kInfinity, -kInfinity}) {
    EXPECT_ORVANE_ERROR(view.SetTransparency(bad), 5, "Orvada.View", standard) << bad;
  }
  EXPECT_ORVANE_ERROR(view.SetTransparency(kNaN), 5, "Orvada.View",
                      "Transparency must be a number from 0 to 1.");
  EXPECT_EQ(view.Transparency(), 0.75);
  EXPECT_EQ(view.ContourLabelsDensity(), 6);
  EXPECT_EQ(view.ContourLabelsLevelSkipping(), 1);
  EXPECT_TRUE(events.names.empty());
  // The ends of the range are legal.
  view.SetTransparency(0.0);
  view.SetTransparency(1.0);
  view.SetContourLabelsLevelSkipping(0);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Transparency", "Transparency",
                                                    "ContourLabelLevelSkipping"}));
}

// Lines and markers copy every property, default or not, with their events in stored order.
TEST(View, SettingAMasterCopiesTheOtherObjectIn) {
  View view;
  view.DataMarkersMaster().SetSize(9.0);
  Line line;
  line.SetColor(Rgb(10, 20, 30));
  line.SetDrawStyle(orvDrawStyleDashDot);
  line.SetWidth(3);
  Marker marker;
  marker.SetVisible(true);
  marker.SetShape(orvMarkerShape2DCircle);
  marker.SetFillColor(Rgb(0, 0, 255));
  marker.EdgeLine().SetDrawStyle(orvDrawStyleDashDot);
  EventRecorder events(view.PropertyChanged);
  view.SetContourLinesMaster(line);
  view.SetDataMarkersMaster(marker);
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"ContourLinesMaster.Color", "ContourLinesMaster.DrawStyle",
                                      "ContourLinesMaster.Width", "DataMarkerMaster.FillColor",
                                      "DataMarkerMaster.Shape", "DataMarkerMaster.Size",
                                      "DataMarkerMaster.Visible", "DataMarkerMaster.EdgeLine.DrawStyle"}));
  EXPECT_EQ(view.ContourLinesMaster().Color(), Rgb(10, 20, 30));
  EXPECT_EQ(view.ContourLinesMaster().DrawStyle(), orvDrawStyleDashDot);
  EXPECT_EQ(view.DataMarkersMaster().Shape(), orvMarkerShape2DCircle);
  EXPECT_EQ(view.DataMarkersMaster().FillColor(), Rgb(0, 0, 255));
  // A copy, not a share: later changes of the originals stay there.
  line.SetWidth(9);
  marker.SetSize(8.0);
  EXPECT_EQ(view.ContourLinesMaster().Width(), 3);
  EXPECT_EQ(view.DataMarkersMaster().Size(), 3.0);
  // Setting a master to itself or to equal values changes nothing.
  view.SetContourLinesMaster(view.ContourLinesMaster());
  view.SetDataMarkersMaster(view.DataMarkersMaster());
  EXPECT_EQ(events.names.size(), 8u);
}

TEST(View, PersistsEveryKeyInItsStoredOrder) {
  const std::string p = "Datasets.DataSet1.ViewMain.";
  const View view;
  PropertyBag bag;
  view.WriteProperties(bag, p);
  // A name ending in '.' is a line: its Color, DrawStyle and Width.
  std::vector<std::string> expected;
  for (const std::string key :
       {"Visible", "UseMasterProperties", "MeshVisible", "MeshLine.", "ContourFillVisible", "ContourLinesVisible",
        "ContourLinesMaster.", "ContourLabelsVisible", "ContourLabelRotation", "ContourLabelEdgeVisible",
        "ContourLabelFillVisible", "ContourLabelColor", "ContourLabelDensity", "ContourLabelLevelSkipping",
        "ContourLabelsEdgeLine.", "DataHullVisible", "DataHullLine.", "UserHullVisible", "UserHullLine.",
        "ClipToUserHull", "Transparency", "TransparencyOn", "DataMarkerMaster.FillColor",
        "DataMarkerMaster.EdgeVisible", "DataMarkerMaster.FillVisible", "DataMarkerMaster.Shape",
        "DataMarkerMaster.Size", "DataMarkerMaster.Visible", "DataMarkerMaster.EdgeLine.", "BaseVisible",
        "BaseColor"}) {
    if (key.back() == '.') {
      for (const char* part : {"Color", "DrawStyle", "Width"}) expected.push_back(p + key + part);
    } else {
      expected.push_back(p + key);
    }
  }
  EXPECT_EQ(Keys(bag), expected);

  EXPECT_EQ(bag.TypeOf(p + "ContourLabelColor"), PropertyType::Long);
  EXPECT_EQ(bag.ReadProperty(p + "ContourLabelColor", std::int32_t{0}), 0xFFFF);
  EXPECT_EQ(bag.TypeOf(p + "ContourLabelDensity"), PropertyType::Long);
  EXPECT_EQ(bag.ReadProperty(p + "ContourLabelDensity", std::int32_t{0}), 4);
  EXPECT_EQ(bag.TypeOf(p + "Transparency"), PropertyType::Double);
  EXPECT_EQ(bag.ReadProperty(p + "Transparency", 0.0), 0.5);
  EXPECT_EQ(bag.TypeOf(p + "ClipToUserHull"), PropertyType::Boolean);
  EXPECT_EQ(bag.TypeOf(p + "DataMarkerMaster.FillColor"), PropertyType::Long);
  EXPECT_EQ(bag.TypeOf(p + "DataMarkerMaster.Shape"), PropertyType::Long);
  EXPECT_EQ(bag.TypeOf(p + "DataMarkerMaster.Size"), PropertyType::Double);
}

TEST(View, RoundTripsThroughStoredContentsAndAnEmptyBagRestoresTheDefaults) {
  View view;
  for (const auto& let : Lets()) let.first(view);
  view.MeshLine().SetWidth(2);
  view.ContourLinesMaster().SetColor(Rgb(0, 128, 0));
  view.ContourLabelsEdgeLine().SetDrawStyle(orvDrawStyleDot);
  view.DataHullLine().SetWidth(4);
  view.UserHullLine().SetColor(Rgb(255, 0, 0));
  view.DataMarkersMaster().SetVisible(true);
  view.DataMarkersMaster().SetShape(orvMarkerShape3DPyramid);
  view.DataMarkersMaster().SetSize(4.25);
  view.DataMarkersMaster().SetFillColor(0x80123456u);  // the high bit survives the signed store
  PropertyBag bag;
  view.WriteProperties(bag, "V.");
  PropertyBag stored;
  stored.SetContents(bag.Contents());

  View copy;
  EventRecorder events(copy.PropertyChanged);
  copy.ReadProperties(stored, "V.");
  PropertyBag again;
  copy.WriteProperties(again, "V.");
  EXPECT_EQ(again.Contents(), bag.Contents());
  EXPECT_EQ(copy.ContourLabelsFillColor(), 0x80FF00FFu);
  EXPECT_EQ(copy.Transparency(), 0.125);
  EXPECT_EQ(copy.DataMarkersMaster().Shape(), orvMarkerShape3DPyramid);
  EXPECT_EQ(copy.DataMarkersMaster().FillColor(), 0x80123456u);
  // One event per stored value that differed, in stored order.
  EXPECT_EQ(events.names.size(), 26u);
  EXPECT_EQ(events.names.front(), "Visible");
  EXPECT_EQ(events.names.back(), "DataMarkerMaster.Visible");

  copy.ReadProperties(PropertyBag(), "V.");
  PropertyBag defaults;
  View().WriteProperties(defaults, "V.");
  PropertyBag reset;
  copy.WriteProperties(reset, "V.");
  EXPECT_EQ(reset.Contents(), defaults.Contents());
}

// A bad value anywhere, in the view or in its lines and marker, is refused before
// anything is applied.
TEST(View, ABadStoredValueAnywhereChangesNothing) {
  struct Bad {
    std::string key;
    PropertyValue value;
    std::int32_t number;
    std::string source;
  };
  const std::vector<Bad> bad = {
      {"Transparency", 1.5, 5, "Orvada.View"},
      {"Transparency", kNaN, 5, "Orvada.View"},
      {"ContourLabelDensity", std::int32_t{-1}, 5, "Orvada.View"},
      {"ContourLabelLevelSkipping", std::int32_t{-4}, 5, "Orvada.View"},
      {"MeshLine.DrawStyle", std::int32_t{6}, 5, "Orvada.Line"},
      {"DataMarkerMaster.Shape", std::int32_t{2}, 5, "Orvada.Marker"},
      {"DataMarkerMaster.Size", -2.0, 5, "Orvada.Marker"},
      {"DataMarkerMaster.EdgeLine.DrawStyle", std::int32_t{-1}, 5, "Orvada.Line"},
      {"Visible", std::string("not a Boolean"), 13, "PropertyBag"},
  };
  for (const Bad& b : bad) {
    View view;
    EventRecorder events(view.PropertyChanged);
    PropertyBag bag;
    bag.WriteProperty("V.Visible", false);  // good values beside the bad one
    bag.WriteProperty("V.MeshVisible", true);
    bag.WriteProperty("V.UserHullLine.Width", std::int32_t{5});
    bag.WriteProperty("V.DataMarkerMaster.Visible", true);
    bag.WriteProperty("V." + b.key, b.value);
    EXPECT_ORVANE_ERROR(view.ReadProperties(bag, "V."), b.number, b.source) << b.key;
    EXPECT_TRUE(view.Visible()) << b.key;
    EXPECT_FALSE(view.MeshVisible()) << b.key;
    EXPECT_EQ(view.UserHullLine().Width(), 1) << b.key;
    EXPECT_FALSE(view.DataMarkersMaster().Visible()) << b.key;
    EXPECT_TRUE(events.names.empty()) << b.key;
  }
  PropertyBag size;
  size.WriteProperty("M.Size", -2.0);
  Marker marker;
  EXPECT_ORVANE_ERROR(marker.ReadProperties(size, "M."), 5, "Orvada.Marker",
                      "Size must be a finite number of 0 or more.");
}

// ---------------------------------------------------------------------------------------
// The band texture of the exact-band fill

// The colour of the texel a height falls in, as the texture's nearest lookup takes it.
Color TexelAt(const detail::BandTexture& t, double z) {
  const double s = static_cast<double>(t.Coordinate(z)) * static_cast<double>(t.texels.size());
  const auto j = static_cast<std::size_t>(std::clamp(std::floor(s), 0.0, static_cast<double>(t.texels.size() - 1)));
  std::uint8_t bytes[4];
  std::memcpy(bytes, &t.texels[j], 4);
  EXPECT_EQ(bytes[3], 255);
  return Rgb(bytes[0], bytes[1], bytes[2]);
}

// Levels with colours of their own: level k red k * 40, the colour below the first blue.
Contouring& Levels(Contouring& c, const std::vector<double>& values) {
  c.SetAutoSetContoursType(orvAutoSetOff);
  for (std::size_t k = 0; k < values.size(); ++k) {
    c.Contours().Add(values[k], Rgb(static_cast<std::uint8_t>(40 * (k + 1)), 0, 0), k == 0 ? Rgb(0, 0, 200) : 0);
  }
  return c;
}

TEST(BandTexture, EvenLevelsFallJustAboveTexelEdgesSoAHeightOnALevelShowsTheBandAbove) {
  Contouring c;
  const detail::BandTexture t = detail::MakeBandTexture(Levels(c, {10, 20, 30}), 50.0, 4096);
  ASSERT_EQ(t.texels.size(), 4096u);  // four bands of 1024 texels
  EXPECT_EQ(t.step, 10.0 / 1024);
  for (std::size_t k = 0; k < 3; ++k) {
    const double level = 10.0 * static_cast<double>(k + 1);
    EXPECT_EQ(TexelAt(t, level), c.FindColor(level, false)) << level;                  // on it: above
    EXPECT_EQ(TexelAt(t, level - 0.02 * t.step), c.FindColor(level - 1, false)) << level;  // just below
  }
  // Far outside the levels the outer bands go on.
  EXPECT_EQ(TexelAt(t, -1e6), Rgb(0, 0, 200));
  EXPECT_EQ(TexelAt(t, 1e6), Rgb(120, 0, 0));
}

TEST(BandTexture, UnevenOneTooManyOrBadLevels) {
  // Uneven: every level within a texel of its place.
  Contouring uneven;
  const detail::BandTexture t = detail::MakeBandTexture(Levels(uneven, {0, 1, 5}), 5.0, 4096);
  ASSERT_EQ(t.texels.size(), 4096u);
  for (const double level : {0.0, 1.0, 5.0}) {
    EXPECT_EQ(TexelAt(t, level + t.step), uneven.FindColor(level, false)) << level;
    EXPECT_EQ(TexelAt(t, level - t.step), uneven.FindColor(level - 0.5, false)) << level;
  }
  // One level: a step from the data's range.
  Contouring one;
  const detail::BandTexture single = detail::MakeBandTexture(Levels(one, {3}), 2.0, 4096);
  EXPECT_EQ(TexelAt(single, 3.0), Rgb(40, 0, 0));
  EXPECT_EQ(TexelAt(single, 2.999), Rgb(0, 0, 200));
  // More bands than texels: no more texels than the card takes.
  Contouring many;
  std::vector<double> values;
  for (int k = 0; k < 6000; ++k) values.push_back(k);
  many.SetAutoSetContoursType(orvAutoSetOff);
  many.Contours().AddLevels(values);
  EXPECT_EQ(detail::MakeBandTexture(many, 6000, 4096).texels.size(), 4096u);
  // No levels, or a NaN among them: no texture (the fill keeps its flat colours).
  Contouring none;
  EXPECT_TRUE(detail::MakeBandTexture(none, 1, 4096).texels.empty());
  Contouring nan;
  nan.SetAutoSetContoursType(orvAutoSetOff);
  nan.Contours().Add(1.0);
  nan.Contours().Add(kNaN);
  EXPECT_TRUE(detail::MakeBandTexture(nan, 1, 4096).texels.empty());
}

}  // namespace
}  // namespace orvane
