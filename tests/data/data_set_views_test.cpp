// A data set's three views: their plot positions, the relays of their changes through
// the data set and the collection, and their place in the persisted contents.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "data/data_set_state.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_sets.h"
#include "orvane/render/view.h"
#include "orvane/resample/resampling.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using detail::DataSetAccess;
using testing::EventRecorder;

// Every event a collection raises, as text, in order.
struct Collection {
  DataSets sets;
  std::vector<std::string> events;
  Connection data = sets.DataChanged.Connect(
      [this](std::int32_t i) { events.push_back("DataChanged " + std::to_string(i)); });
  Connection view = sets.ViewChanged.Connect([this](const std::string& p, const std::string& n) {
    events.push_back("ViewChanged " + p + " " + n);
  });
  Connection property = sets.PropertyChanged.Connect(
      [this](const std::string& n) { events.push_back("PropertyChanged " + n); });
};

void SetPoints(DataSet& d) {
  d.DataAsSparseGridSet(4, std::vector<double>{0, 1, 0, 1}, std::vector<double>{0, 0, 1, 1},
                        std::vector<double>{1, 2, 3, 4});
}

TEST(DataSetViews, TheDataSetRelaysItsViewsAndResamplingUnderTheirPrefixes) {
  DataSet d;
  EventRecorder events(d.PropertyChanged);
  d.ViewMain().SetVisible(false);
  d.ViewTop().MeshLine().SetColor(255);
  d.ViewBottom().DataMarkersMaster().EdgeLine().SetWidth(3);
  d.ViewBottom().SetUserHullClipping(true);
  d.Resampling().SetIntervalCount(4);
  d.ViewMain().SetVisible(false);  // unchanged: nothing
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"ViewMain.Visible", "ViewTop.MeshLine.Color",
                                      "ViewBottom.DataMarkerMaster.EdgeLine.Width",
                                      "ViewBottom.ClipToUserHull",
                                      "Resampling.IntervalCount"}));
}

TEST(DataSetViews, TheCollectionRaisesOneEventPerChangeOfAnItem) {
  Collection c;
  c.sets.SetCount(2);
  c.events.clear();
  c.sets.Item(0).ViewMain().SetMeshVisible(true);
  c.sets.Item(1).ViewTop().SetContourLabelsDensity(7);
  c.sets.Item(1).ViewBottom().ContourLinesMaster().SetWidth(2);
  c.sets.Item(1).Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  c.sets.Item(0).Resampling().Kriging().SetSill(3.0);
  SetPoints(c.sets.Item(1));
  EXPECT_EQ(c.events, (std::vector<std::string>{
                          "ViewChanged Main MeshVisible",
                          "ViewChanged Top ContourLabelDensity",
                          "ViewChanged Bottom ContourLinesMaster.Width",
                          "PropertyChanged DataSet2.Resampling.ResamperType",
                          "PropertyChanged DataSet1.Resampling.Kriging.Sill",
                          "DataChanged 1",  // the setter's reset
                          "DataChanged 1",
                      }));
}

TEST(DataSetViews, ItemsThatLeaveAndRejoinRelayOnceWithTheirNewPosition) {
  Collection c;
  c.sets.SetCount(3);
  c.sets.SetCount(1);
  c.sets.SetCount(2);
  c.events.clear();
  c.sets.Item(1).ViewMain().SetVisible(false);
  c.sets.Item(1).Resampling().SetAutoRange(false);
  c.sets.Item(0).ViewBottom().SetTransparencyOn(true);
  EXPECT_EQ(c.events, (std::vector<std::string>{"ViewChanged Main Visible",
                                                "PropertyChanged DataSet2.Resampling.AutoRange",
                                                "ViewChanged Bottom TransparencyOn"}));
}

TEST(DataSetViews, SuspendedCollectionsRaiseNothingButTheItemsStillDo) {
  Collection c;
  c.events.clear();
  EventRecorder item(c.sets.Item(0).PropertyChanged);
  c.sets.SetEventsSuspended(true);
  c.sets.Item(0).ViewTop().SetVisible(false);
  c.sets.Item(0).Resampling().SetIntervalCount(3);
  c.sets.Item(0).Clear();
  c.sets.SetEventsSuspended(false);
  EXPECT_TRUE(c.events.empty());
  EXPECT_EQ(item.names,
            (std::vector<std::string>{"ViewTop.Visible", "Resampling.IntervalCount"}));
  c.sets.Item(0).UserHullClear();
  EXPECT_EQ(c.events, std::vector<std::string>{"DataChanged 0"});
}

TEST(DataSetViews, ViewsTravelWithTheContentsBetweenTheDataAndTheResampling) {
  DataSet d;
  SetPoints(d);
  d.ViewMain().SetMeshVisible(true);
  d.ViewTop().SetContourLabelsFillColor(0x123456);
  d.ViewBottom().DataHullLine().SetWidth(5);
  d.Resampling().SetIntervalCount(6);
  PropertyBag bag;
  d.WriteContents(bag, "Datasets.DataSet1.");
  std::vector<std::string> keys;
  for (const auto& item : bag.Items()) keys.push_back(item.first);
  const auto at = [&keys](const std::string& key) {
    return std::find(keys.begin(), keys.end(), "Datasets.DataSet1." + key) - keys.begin();
  };
  EXPECT_LT(at("Z"), at("ViewMain.Visible"));
  EXPECT_LT(at("ViewMain.DataMarkerMaster.EdgeLine.Width"), at("ViewTop.Visible"));
  EXPECT_LT(at("ViewTop.DataMarkerMaster.EdgeLine.Width"), at("ViewBottom.Visible"));
  EXPECT_LT(at("ViewBottom.DataMarkerMaster.EdgeLine.Width"), at("Resampling.AutoRange"));
  EXPECT_EQ(bag.ReadProperty("Datasets.DataSet1.ViewMain.MeshVisible", false), true);
  EXPECT_EQ(bag.ReadProperty("Datasets.DataSet1.ViewTop.ContourLabelColor", std::int32_t{0}),
            0x123456);
  EXPECT_EQ(bag.ReadProperty("Datasets.DataSet1.ViewBottom.DataHullLine.Width", std::int32_t{0}),
            5);

  PropertyBag stored;
  stored.SetContents(bag.Contents());
  DataSet copy;
  EventRecorder events(copy.PropertyChanged);
  copy.ReadContents(stored, "Datasets.DataSet1.");
  EXPECT_TRUE(copy.ViewMain().MeshVisible());
  EXPECT_EQ(copy.ViewTop().ContourLabelsFillColor(), 0x123456u);
  EXPECT_EQ(copy.ViewBottom().DataHullLine().Width(), 5);
  EXPECT_EQ(copy.Resampling().IntervalCount(), 6);
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"Resampling.IntervalCount", "ViewMain.MeshVisible",
                                      "ViewTop.ContourLabelColor", "ViewBottom.DataHullLine.Width"}));
  // An empty bag gives every view its defaults again.
  copy.ReadContents(PropertyBag(), "Datasets.DataSet1.");
  EXPECT_FALSE(copy.ViewMain().MeshVisible());
  EXPECT_EQ(copy.ViewBottom().DataHullLine().Width(), 1);
}

TEST(DataSetViews, ABadStoredViewValueLeavesTheWholeDataSetAsItWas) {
  DataSet d;
  SetPoints(d);
  d.ViewMain().SetMeshVisible(true);
  PropertyBag bag;
  bag.WriteProperty("D.DataType", std::int32_t{2});
  bag.WriteProperty("D.Count", std::int32_t{3});
  bag.WriteProperty("D.X", std::vector<double>{5, 6, 7});
  bag.WriteProperty("D.Y", std::vector<double>{5, 7, 6});
  bag.WriteProperty("D.Z", std::vector<double>{5, 6, 7});
  bag.WriteProperty("D.ViewMain.MeshVisible", false);
  bag.WriteProperty("D.Resampling.IntervalCount", std::int32_t{3});
  bag.WriteProperty("D.ViewBottom.ContourLabelLevelSkipping", std::int32_t{-1});
  EventRecorder events(d.PropertyChanged);
  EXPECT_ORVANE_ERROR(d.ReadContents(bag, "D."), 5, "Orvada.View");
  EXPECT_EQ(DataSetAccess::State(d).pointCount, 4);
  EXPECT_TRUE(d.ViewMain().MeshVisible());
  EXPECT_EQ(d.Resampling().IntervalCount(), 10);
  EXPECT_TRUE(events.names.empty());
}

}  // namespace
}  // namespace orvane
