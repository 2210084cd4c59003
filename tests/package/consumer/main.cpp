// A program outside the Orvane tree, built against the installed package.
#include <orvane/orvane.h>

#include <cmath>
#include <iostream>
#include <vector>

int main() {
  orvane::PropertyBag bag;
  orvane::Line line;
  line.SetColor(orvane::Rgb(255, 0, 0));
  line.WriteProperties(bag, "Line.");
  orvane::PropertyBag copy;
  copy.SetContents(bag.Contents());
  orvane::Line restored;
  restored.ReadProperties(copy, "Line.");
  const std::string label = orvane::FormatNumber(1234.5, "#,##0.00");
  // The image device context pulls in libpng through the package's dependencies.
  const orvane::ImageDC image(2, 2);
  if (restored.Color() != line.Color() || label != "1,234.50" ||
      image.Pixel(1, 1) != orvane::Rgb(255, 255, 255)) {
    std::cout << "consumer: mismatch\n";
    return 1;
  }
  // The README's picture from code: a cone of scattered points drawn off screen.
  orvane::HeadlessHost host;
  orvane::Surface surface(host);
  surface.InitProperties();
  surface.OnResize(160, 120);
  std::vector<double> x, y, z;
  for (int i = 0; i < 15; ++i) {
    for (int j = 0; j < 15; ++j) {
      x.push_back(i);
      y.push_back(j + 0.01 * i);
      z.push_back(10.0 - std::hypot(i - 7.0, j - 7.0));
    }
  }
  surface.DataSets().Item(0).DataAsSparseGridSet(x, y, z);
  surface.Contouring().SetExactBands(true);
  surface.Contouring().SetTiesAbove(true);
  surface.Header().SetText("Z = f(X, Y)");
  surface.Header().SetVisible(true);
  surface.Refresh();
  orvane::ImageDC picture(160, 120);
  surface.DrawToDC(picture, 0, 0, 160, 120);
  int coloured = 0;
  for (int py = 0; py < 120; ++py) {
    for (int px = 0; px < 160; ++px) coloured += picture.Pixel(px, py) != orvane::Rgb(255, 255, 255);
  }
  if (coloured < 1000) {
    std::cout << "consumer: the picture is empty\n";
    return 1;
  }
  std::cout << "consumer: ok (Orvane " << ORVANE_VERSION_STRING << ")\n";
  return 0;
}
