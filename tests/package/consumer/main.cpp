// A program outside the Orvane tree, built against the installed package.
#include <orvane/orvane.h>

#include <iostream>

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
  std::cout << "consumer: ok (Orvane " << ORVANE_VERSION_STRING << ")\n";
  return 0;
}
