#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orvane/core/property_bag.h"
#include "orvane/render/faces.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

TEST(Faces, MastersAreCopiedXYThenXZThenYZWhileTheyRule) {
  Faces faces;
  EventRecorder events(faces.PropertyChanged);
  faces.SetFillColorMaster(Rgb(10, 20, 30));
  EXPECT_EQ(events.names, (std::vector<std::string>{"XYFace.FillColor", "XZFace.FillColor",
                                                    "YZFace.FillColor", "FillColorMaster"}));
  for (Face* f : {&faces.XYFace(), &faces.XZFace(), &faces.YZFace()}) {
    EXPECT_EQ(f->FillColor(), Rgb(10, 20, 30));
  }
  events.names.clear();
  faces.EdgeLineMaster().SetWidth(0);
  EXPECT_EQ(faces.YZFace().EdgeLine().Width(), 0);
  EXPECT_EQ(events.names.back(), "EdgeLineMaster.Width");
  // A face's own lets are ignored, silently, while the masters rule.
  events.names.clear();
  faces.XZFace().SetFillVisible(false);
  faces.XZFace().MajorGridLine().SetColor(255);
  EXPECT_TRUE(faces.XZFace().FillVisible());
  EXPECT_EQ(faces.XZFace().MajorGridLine().Color(), 0u);
  EXPECT_TRUE(events.names.empty());
}

TEST(Faces, WithoutMastersEachFaceKeepsItsOwnValues) {
  Faces faces;
  faces.SetUseMasterProperties(false);
  EventRecorder events(faces.PropertyChanged);
  faces.SetFillColorMaster(Rgb(1, 2, 3));  // reaches no face
  EXPECT_EQ(faces.XYFace().FillColor(), 0xFFFFFFu);
  faces.XYFace().SetFillColor(Rgb(9, 9, 9));
  faces.XYFace().SetFillColor(Rgb(9, 9, 9));  // unchanged: no event
  faces.YZFace().EdgeLine().SetDrawStyle(orvDrawStyleDash);
  EXPECT_EQ(events.names, (std::vector<std::string>{"FillColorMaster", "XYFace.FillColor",
                                                    "YZFace.EdgeLine.DrawStyle"}));
  faces.SetUseMasterProperties(true);  // copies the masters back in
  EXPECT_EQ(faces.XYFace().FillColor(), Rgb(1, 2, 3));
  EXPECT_EQ(faces.YZFace().EdgeLine().DrawStyle(), orvDrawStyleSolid);
}

TEST(Faces, PersistedKeysRoundTripAndDefaults) {
  Faces faces;
  faces.SetUseMasterProperties(false);
  faces.SetEdgeVisibleMaster(false);
  faces.MajorGridLineMaster().SetColor(Rgb(200, 200, 200));
  faces.XZFace().SetFillColor(Rgb(0, 0, 128));
  faces.YZFace().MajorGridLine().SetWidth(3);
  PropertyBag bag;
  faces.WriteProperties(bag, "Faces.");
  for (const char* key : {"Faces.FillColorMaster", "Faces.UseMasterProperties",
                          "Faces.EdgeLineMaster.Color", "Faces.MajorGridLineMaster.Width",
                          "Faces.XYFace.EdgeVisible", "Faces.XZFace.FillColor",
                          "Faces.YZFace.MajorGridLine.Width", "Faces.YZFace.EdgeLine.DrawStyle"}) {
    EXPECT_TRUE(bag.Contains(key)) << key;
  }
  EXPECT_EQ(bag.Items().front().first, "Faces.FillColorMaster");
  Faces copy;
  copy.ReadProperties(bag, "Faces.");
  EXPECT_FALSE(copy.UseMasterProperties());
  EXPECT_FALSE(copy.EdgeVisibleMaster());
  EXPECT_EQ(copy.XZFace().FillColor(), Rgb(0, 0, 128));
  EXPECT_EQ(copy.YZFace().MajorGridLine().Width(), 3);
  EXPECT_EQ(copy.MajorGridLineMaster().Color(), Rgb(200, 200, 200));
  // No keys: the defaults, with the masters copied in.
  copy.ReadProperties(PropertyBag(), "Faces.");
  EXPECT_TRUE(copy.UseMasterProperties());
  EXPECT_EQ(copy.XZFace().FillColor(), 0xFFFFFFu);
  EXPECT_EQ(copy.YZFace().MajorGridLine().Width(), 1);
  // A bad line style anywhere changes nothing.
  faces.XYFace().SetFillColor(Rgb(5, 5, 5));
  PropertyBag bad;
  bad.WriteProperty("Faces.XYFace.FillColor", std::int32_t{0});
  bad.WriteProperty("Faces.YZFace.EdgeLine.DrawStyle", std::int32_t{9});
  EXPECT_ORVANE_ERROR(faces.ReadProperties(bad, "Faces."), 5, "Orvada.Line");
  EXPECT_EQ(faces.XYFace().FillColor(), Rgb(5, 5, 5));
  EXPECT_FALSE(faces.UseMasterProperties());
}

}  // namespace
}  // namespace orvane
