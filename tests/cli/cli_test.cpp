#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <png.h>

#include "orvane/contour/contouring.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_set.h"
#include "orvane/data/xyz_file.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

struct Outcome {
  int status = -1;
  std::string out;  // standard output and error together
};

// Runs a shell command line, standard error joined to standard output.
Outcome Shell(const std::string& command) {
  Outcome run;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return run;
  std::array<char, 4096> buffer{};
  std::size_t n = 0;
  while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) run.out.append(buffer.data(), n);
  const int raw = pclose(pipe);
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  return run;
}

Outcome Orvane(const std::string& arguments) {
  return Shell(std::string(ORVANE_CLI_PATH) + " " + arguments + " 2>&1");
}

// Runs a command that must succeed; a failure shows its arguments and output.
::testing::AssertionResult Succeeds(const std::string& arguments) {
  const Outcome run = Orvane(arguments);
  if (run.status == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "orvane " << arguments << " gave status " << run.status << ":\n" << run.out;
}

// The output of a command that must succeed.
std::string Output(const std::string& arguments) {
  const Outcome run = Orvane(arguments);
  EXPECT_EQ(run.status, 0) << "orvane " << arguments << "\n" << run.out;
  return run.out;
}

const std::string kMeuse = std::string(ORVANE_SHARED_DATA) + "/meuse.csv";

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("orvane_cli_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::string Path(const std::string& name) const { return (dir_ / name).string(); }
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(Path(name)) << text;
    return Path(name);
  }
  // The property bag of the State that orvane state saves for the arguments.
  orvane::PropertyBag Stored(const std::string& arguments) {
    const std::string path = Path("saved.state");
    EXPECT_TRUE(Succeeds("state " + arguments + " -o " + path));
    std::ifstream in(path, std::ios::binary);
    orvane::PropertyBag bag;
    bag.SetContents(std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()));
    return bag;
  }
  std::filesystem::path dir_;
};

nlohmann::json Json(const std::string& path) {
  std::ifstream in(path);
  return nlohmann::json::parse(in);
}

// Lines of a text file.
std::vector<std::string> Lines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();  // DSAA files end lines in CRLF
    lines.push_back(line);
  }
  return lines;
}

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Files of a folder, by name.
std::set<std::string> Listing(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename().string());
  return names;
}

// n points with X and Y uniform over [0, xSpan) x [0, ySpan) and Z = f(X, Y), to 17 digits.
template <class F>
std::string Scattered(int n, unsigned seed, F f, double xSpan = 1, double ySpan = 1) {
  std::ostringstream text;
  text.precision(17);
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0, 1);
  for (int i = 0; i < n; ++i) {
    const double x = xSpan * unit(random), y = ySpan * unit(random);
    text << x << ' ' << y << ' ' << f(x, y) << '\n';
  }
  return text.str();
}

// Lines "x y z" from f(i, j) = {x, y, z} for i from 0 to ni and j from 0 to nj, to 17 digits.
template <class F>
std::string Lattice(int ni, int nj, F f) {
  std::ostringstream text;
  text.precision(17);
  for (int i = 0; i <= ni; ++i) {
    for (int j = 0; j <= nj; ++j) {
      const std::array<double, 3> p = f(i, j);
      text << p[0] << ' ' << p[1] << ' ' << p[2] << '\n';
    }
  }
  return text.str();
}

// Points on a triangle over [0, 10]^2 (x + y <= 10) with z = x + 2y: a hull that leaves
// half of its bounding box empty.
std::string TrianglePoints() {
  std::ostringstream text;
  for (int i = 0; i <= 10; ++i) {
    for (int j = 0; i + j <= 10; ++j) text << i << ' ' << j << ' ' << i + 2 * j + 0.25 * ((i * 7 + j * 3) % 5) << '\n';
  }
  return text.str();
}

// A PNG file's pixels as RGB rows, through libpng; empty when it cannot be read.
struct Png {
  int width = 0, height = 0;
  std::vector<std::uint8_t> rgb;
  std::uint32_t At(int x, int y) const {
    const std::size_t k = (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3;
    return static_cast<std::uint32_t>(rgb[k]) | static_cast<std::uint32_t>(rgb[k + 1]) << 8 |
           static_cast<std::uint32_t>(rgb[k + 2]) << 16;
  }
};

Png ReadPng(const std::string& path) {
  Png png;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return png;
  image.format = PNG_FORMAT_RGB;
  png.width = static_cast<int>(image.width);
  png.height = static_cast<int>(image.height);
  png.rgb.resize(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, png.rgb.data(), 0, nullptr) == 0) return Png{};
  return png;
}

// Pixels in the colour map's colours, not greys.
int ColouredPixels(const Png& png) {
  int n = 0;
  for (int y = 0; y < png.height; ++y) {
    for (int x = 0; x < png.width; ++x) {
      const std::uint32_t c = png.At(x, y);
      const int r = static_cast<int>(c & 0xFF), g = static_cast<int>((c >> 8) & 0xFF), b = static_cast<int>(c >> 16);
      n += std::max({r, g, b}) - std::min({r, g, b}) > 60;
    }
  }
  return n;
}

// Signed area of a closed GeoJSON ring (positive counter-clockwise).
double RingArea(const nlohmann::json& ring) {
  double twice = 0;
  for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
    twice += ring[i][0].get<double>() * ring[i + 1][1].get<double>() - ring[i + 1][0].get<double>() * ring[i][1].get<double>();
  }
  return twice / 2;
}

// How many band geometries of a GeoJSON file GDAL finds invalid, or -1 when it cannot
// read the file.
int InvalidBandsPerGdal(const std::filesystem::path& file) {
  const Outcome run = Shell("ogrinfo -q -dialect sqlite -sql \"SELECT count(*) AS bad FROM '" + file.stem().string() +
                            "' WHERE level IS NULL AND NOT ST_IsEmpty(geometry) AND NOT ST_IsValid(geometry)\" '" +
                            file.string() + "' 2>&1");
  const std::size_t at = run.out.find("bad (Integer) = ");
  return run.status != 0 || at == std::string::npos ? -1 : std::stoi(run.out.substr(at + 16));
}

// --- Commands, input and refusals -------------------------------------------------------

TEST_F(Cli, VersionHelpAndUsage) {
  const Outcome version = Orvane("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.out, StartsWith("orvane "));
  const Outcome help = Orvane("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("triangulate"));
  const Outcome bare = Orvane("");
  EXPECT_EQ(bare.status, 2);
  EXPECT_THAT(bare.out, HasSubstr("Subcommands:"));
}

TEST_F(Cli, InfoReportsCountsLimitsAndHull) {
  // A byte-order mark, a header and CR line endings of either kind. 3.5 comes back from
  // normalised units over -7.3 .. 6.9 as 3.500000000000001, and must be printed as read.
  const std::string file = Write("h.xyz", "\xEF\xBB\xBF" "x y z\r\n-7.3 0 1\r\n6.9 0 2\r\r\n3.5 5 3\n-7.3 5 4\r\n0 2 -5\n");
  EXPECT_EQ(nlohmann::json::parse(Output("info " + file + " --json")),
            nlohmann::json::parse(R"({"hull":[[-7.3,0],[6.9,0],[3.5,5],[-7.3,5]],
      "points":5,"triangles":4,"xmax":6.9,"xmin":-7.3,"ymax":5,"ymin":0,"zmax":4,"zmin":-5})"));
  EXPECT_EQ(Orvane("info " + file).out, "file       " + file + "\npoints     5\nx          -7.3 .. 6.9\ny          0 .. 5\n"
                                        "z          -5 .. 4\ntriangles  4\nhull       4 vertices, counter-clockwise\n"
                                        "  -7.3 0\n  6.9 0\n  3.5 5\n  -7.3 5\n");
}

TEST_F(Cli, BadRequestsAreRefusedByNameAndWriteNothing) {
  const std::string points = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n0.5 0.5 9\n");
  const std::string diagonal = Write("diagonal.xyz", "0 0 1\n1 1 2\n2 2 3\n");
  const std::string upright = Write("upright.xyz", "1 0 1\n1 1 2\n1 2 3\n");
  const std::string negative = Write("negative.xyz", "0 0 -1\n1 0 2\n0 1 3\n");
  const std::string words = Write("words.xyz", "hello world\n"), four = Write("four.xyz", "1 2 3\n4 5 6 7\n");
  const std::string two = Write("two.xyz", "1 2 3\n4 5\n"), nan = Write("nan.xyz", "0 0 1\n1 0 nan\n2 0 2\n");
  const std::string junk = Write("junk.state", "not a state at all");
  const std::string out = Path("out"), missing = Path("none.xyz");
  const std::string contour = "contour " + points + " -o " + out + ".geojson ";
  const std::string grid = "grid " + points + " -o " + out + ".csv --method ";
  const std::string render = "render " + points + " -o " + out + ".png ";
  const std::string hint = "orvane: run 'orvane --help' or 'orvane COMMAND --help' for the options\n";
  const std::string size = "orvane: --size must be WIDTHxHEIGHT with each side from 1 to 16384, as in 800x600\n";
  const std::string sill = "must be a finite number not below --nugget (";
  const std::string formats = ": cannot write .jpg files; the grid formats are .tif, .nc, .asc, .grd, .csv\n";
  // The whole output, or its start where the message has no line end.
  const std::pair<std::string, std::string> cases[] = {
      {"bogus", "orvane: unknown command 'bogus'\n" + hint},
      {"rendr --sample -o " + out + ".png", "orvane: unknown command 'rendr'; did you mean render?\n" + hint},
      {"info", "orvane: FILE is required\n" + hint},
      {"grid " + points + " --method idw", "orvane: --output is required\n" + hint},
      {grid + "idw --interval 4", "orvane: grid: unknown option --interval; did you mean --intervals?\n" + hint},
      {contour + "--intervals 4", "orvane: contour: unknown option --intervals; did you mean --interval?\n" + hint},
      {grid + "idw --colour red", "orvane: grid: unknown option --colour\n" + hint},
      {"cv " + kMeuse + " --method idw --intervals 4", "orvane: cv: unknown option --intervals\n" + hint},
      // Input.
      {"info " + missing, "orvane: " + missing + ": cannot open the file (No such file or directory)\n"},
      {"info /dev/zero", "orvane: /dev/zero:1: the line is longer than 1 MiB\n"},  // not read into memory
      {"info " + words, "orvane: " + words + ": no points were found (no line holds X, Y and Z numbers)\n"},
      {"info " + four, "orvane: " + four + ":2: expected 3 numbers (X, Y, Z), found 4 fields; pick the X, Y and Z "
                       "columns with --columns X,Y,Z\n"},
      {"info " + two, "orvane: " + two + ":2: expected 3 numbers (X, Y, Z), found 2 fields; leave out rows with "
                      "missing values with --skip-invalid\n"},
      {"info " + nan, "orvane: " + nan + ":2: values must be finite numbers; leave out such rows with --skip-invalid\n"},
      {"info --columns 3,4 " + points, "orvane: --columns: At least 3 required but received 2\n" + hint},
      {"info --columns 0,4,5 " + points, "orvane: --columns are numbered from 1\n"},
      // Levels.
      {contour + "--count 0", "orvane: --count must be between 1 and 10000\n"},
      {contour + "--count 10001", "orvane: --count must be between 1 and 10000\n"},
      {contour + "--count 2000000000", "orvane: --count must be between 1 and 10000\n"},
      {contour + "--interval 0", "orvane: --interval must be a finite number above 0\n"},
      {contour + "--interval nan", "orvane: --interval must be a finite number above 0\n"},
      {contour + "--interval 1e-9", "orvane: --interval 1e-09 gives more than 10000 levels between the Z limits\n"},
      {contour + "--levels 1,nan,2", "orvane: --levels: the level nan is not a finite number\n"},
      {contour + "--levels inf", "orvane: --levels: the level inf is not a finite number\n"},
      {contour + "--ties sometimes", "orvane: --ties must be above or exact\n"},
      {contour + "--count 3 --interval 2", "orvane: --count excludes --interval\n" + hint},
      {contour + "--offset 1", "orvane: --offset requires --interval\n" + hint},
      {"contour " + points + " -o " + out + ".txt",
       "orvane: " + out + ".txt: cannot write .txt files; orvane contour writes .geojson or .json\n"},
      // Grids.
      {"grid " + diagonal + " -o " + out + ".csv --method nn",
       "orvane: Natural-neighbour interpolation needs points that do not all lie on one line.\n"},
      {"grid " + upright + " -o " + out + ".csv --method idw",
       "orvane: " + upright + ": the points have no extent along X; give --xmin and --xmax for the grid.\n"},
      {grid + "idw --power -1", "orvane: Weighting power must be greater than or equal to 0\n"},
      {grid + "idw --xmin 5", "orvane: The grid's X minimum must lie below its maximum.\n"},
      {grid + "nn --power 2", "orvane: --power applies to --method idw only.\n"},
      {grid + "spline", "orvane: --method: spline not in {idw,kriging,nn}\n" + hint},
      {grid + "idw --intervals 0", "orvane: --intervals must be between 1 and 10000\n"},
      {grid + "idw --intervals 10001", "orvane: --intervals must be between 1 and 10000\n"},
      {grid + "idw --xmax nan", "orvane: --xmax must be a finite number\n"},
      {grid + "nn --extrapolate --blank-outside-hull", "orvane: --extrapolate and --blank-outside-hull contradict each other.\n"},
      {grid + "nn --radius 1", "orvane: --radius applies to --method idw only.\n"},
      {grid + "idw --max-points -1", "orvane: --max-points must be between 0 (all) and 100000000\n"},
      {grid + "kriging --nugget -1", "orvane: --nugget must be a finite number of 0 or more, not -1.\n"},
      {grid + "kriging --sill 0.5", "orvane: --sill 0.5 does not go with the default nugget 1 (no variogram could be "
                                    "fitted: A variogram fit needs at least two distance classes.); give --nugget and --sill\n"},
      {grid + "kriging --nugget 3 --sill 2", "orvane: --sill (2) " + sill + "3): the sill is the total variance, the nugget included.\n"},
      {grid + "kriging --nugget 0 --sill -2", "orvane: --sill (-2) " + sill + "0): the sill is the total variance, the nugget included.\n"},
      {grid + "idw --variance " + out + "-v.csv", "orvane: --variance applies to --method kriging only.\n"},
      {grid + "kriging --variance v.tif", "orvane: --variance v.tif must be a file of the grid's own format (.csv)\n"},
      {grid + "kriging --variance " + out + ".csv", "orvane: --variance must name another file than -o\n"},
      {"grid " + points + " --method idw -o " + out + ".jpg", "orvane: " + out + ".jpg" + formats},
      {"grid " + points + " --method idw -o - --format tif", "orvane: GeoTIFF cannot be written to standard output; name a file\n"},
      // Pictures.
      {"render -o " + out + ".png", "orvane: give a data FILE, --sample or --state\n"},
      {render + "--sample", "orvane: give either a data FILE or --sample\n"},
      {render + "--size 0x10", size},
      {render + "--size 800", size},
      {render + "--plot-type 4d", "orvane: --plot-type must be 3d or 2d\n"},
      {render + "--rotation 1,2", "orvane: --rotation takes three angles: X,Y,Z\n"},
      {render + "--zoom 0", "orvane: --zoom must be a finite number above 0\n"},
      {render + "--contours 0", "orvane: --contours must be between 1 and 10000\n"},
      {render + "--fill lumpy", "orvane: --fill must be flat, bands or smooth\n"},
      {render + "--fill flat --interpolate-colors", "orvane: --interpolate-colors asks for --fill smooth, not --fill flat\n"},
      {render + "--ties maybe", "orvane: --ties must be above or exact\n"},
      {render + "--power 2", "orvane: --power applies with --resample only\n"},
      {render + "--blank-outside-hull", "orvane: --blank-outside-hull applies with --resample only\n"},
      {render + "--resample idw --variance 3", "orvane: --variance applies to --resample kriging only\n"},
      {render + "--colormap plaid", "orvane: --colormap must be one of blue-red"},
      {render + "--levels-log 4 --contours 3", "orvane: --contours excludes --levels-log\n" + hint},
      {"render " + negative + " --levels-log 4 -o " + out + ".png", "orvane: --levels-log needs Z above 0: the data's minimum is -1\n"},
      {render + "--samples 0", "orvane: --samples must be between 1 and 16\n"},
      {render + "--aspect square", "orvane: --aspect must be equal or auto\n"},
      {render + "--projections sideways", "orvane: --projections must be none, top, bottom or both\n"},
      {"render --sample --resample idw -o " + out + ".png", "orvane: --resample applies to a data FILE only\n"},
      {"render --state " + junk + " -o " + out + ".png", "orvane: " + junk + ": not a saved state ("},
      {"render --state " + missing + " -o " + out + ".png", "orvane: " + missing + ": cannot open the state file\n"},
      {"render --sample -o " + out + ".jpg",
       "orvane: " + out + ".jpg: cannot write .jpg files; orvane render writes .png (or - for standard output)\n"},
      {"variogram " + kMeuse + " --plot " + out + ".svg", "orvane: " + out + ".svg: --plot writes .png (or - for standard output)\n"},
      {"cv " + kMeuse + " --method idw --extrapolate", "orvane: --extrapolate applies to --method nn only\n"},
      {"cv " + kMeuse + " --method idw --radius 1", "orvane: no point could be estimated from the others (no other point in range)\n"}};
  const std::set<std::string> inputs = Listing(dir_);
  for (const auto& [arguments, message] : cases) {
    const Outcome run = Orvane(arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    if (message.back() == '\n') {
      EXPECT_EQ(run.out, message) << arguments;
    } else {
      EXPECT_THAT(run.out, StartsWith(message)) << arguments;
    }
  }
  EXPECT_EQ(Listing(dir_), inputs);
  // The bounds themselves are taken, and named in the help.
  EXPECT_TRUE(Succeeds(contour + "--count 10000"));
  EXPECT_THAT(Orvane("contour --help").out, HasSubstr("1 to 10000"));
  EXPECT_THAT(Orvane("grid --help").out, HasSubstr("1 to 10000"));
  EXPECT_TRUE(Succeeds("grid " + upright + " --method idw --xmin 0 --xmax 2 --intervals 2 -o " + out + ".csv"));
  EXPECT_TRUE(Succeeds(grid + "kriging --nugget 0.5 --sill 3"));
}

TEST_F(Cli, InputColumnsInvalidRowsDuplicatesNoDataAndFields) {
  // Chosen columns of a wider, semicolon-separated file.
  const std::string wide = Write("wide.csv", "id;name;x;y;z\n1;a;0;0;1\n2;b;2;0;2\n3;c;2;3;3\n4;d;0;3;4\n");
  const nlohmann::json facts = nlohmann::json::parse(Output("info --json --columns 3,4,5 " + wide));
  EXPECT_EQ(facts["points"], 4);
  EXPECT_EQ(facts["xmax"], 2.0);
  EXPECT_EQ(facts["zmax"], 4.0);
  // Rows with NaN or missing values, skipped when asked.
  const std::string gaps = Write("gaps.xyz", "0 0 1\n1 0 nan\n2 0 2\n1 1\n2 3 3\n0 3 4\n");
  const std::string lenient = Output("info --skip-invalid " + gaps);
  EXPECT_THAT(lenient, HasSubstr("orvane: " + gaps + ": skipped 2 rows with missing or invalid values\n"));
  EXPECT_THAT(lenient, HasSubstr("points     4\n"));
  // Exact duplicates merge into their mean, with a note, for every command.
  const std::string twice = Write("twice.xyz", "0 0 1\n2 0 2\n2 2 3\n0 2 4\n0 0 3\n");
  const std::string merged = Output("info " + twice);
  EXPECT_THAT(merged, HasSubstr("orvane: " + twice + ": merged 1 duplicate point (same X and Y) into the mean Z of each place\n"));
  EXPECT_THAT(merged, HasSubstr("points     4\n"));
  ASSERT_TRUE(Succeeds("grid " + twice + " --method idw --intervals 1 -o " + Path("g.csv")));
  EXPECT_EQ(Lines(Path("g.csv")).at(0), "0,0,2");
  ASSERT_TRUE(Succeeds("triangulate " + twice + " -o " + Path("t.csv")));
  for (const std::string& line : Lines(Path("t.csv"))) EXPECT_THAT(line, Not(HasSubstr("4")));  // points 0 to 3
  // -9999 as no data; a vector layer's Z by name.
  const std::string missing = Write("m.xyz", "0 0 1\n1 0 -9999\n0 1 3\n2 2 4\n");
  const std::string nodata = Output("info --json --nodata -9999 " + missing);
  EXPECT_THAT(nodata, HasSubstr("orvane: " + missing + ": left out 1 point with no data\n"));
  EXPECT_THAT(nodata, HasSubstr("\"zmin\":1.0"));
  const std::string layer = Write("p.geojson", R"({"type":"FeatureCollection","features":[
    {"type":"Feature","properties":{"zinc":1},"geometry":{"type":"Point","coordinates":[0,0]}},
    {"type":"Feature","properties":{"zinc":2},"geometry":{"type":"Point","coordinates":[1,0]}},
    {"type":"Feature","properties":{"zinc":3},"geometry":{"type":"Point","coordinates":[0,1]}}]})");
  EXPECT_EQ(Orvane("info " + layer).out,
            "orvane: " + layer + ": the points have no Z; name the field that holds it (one of zinc); give it with --z-field NAME\n");
  EXPECT_EQ(nlohmann::json::parse(Orvane("info --json --z-field zinc " + layer).out)["points"], 3);
}

// --- Triangles and contours -------------------------------------------------------------

TEST_F(Cli, TriangulateWritesEveryTriangleOnce) {
  const std::string file = Write("random.xyz", Scattered(300, 8, [](double x, double y) { return x + y; }, 100, 100));
  const std::string out = Path("tri.csv");
  ASSERT_TRUE(Succeeds("triangulate " + file + " -o " + out));
  const nlohmann::json facts = nlohmann::json::parse(Orvane("info --json " + file).out);
  std::set<std::array<int, 3>> triangles;
  for (const std::string& line : Lines(out)) {
    std::array<int, 3> t{};
    ASSERT_EQ(std::sscanf(line.c_str(), "%d,%d,%d", &t[0], &t[1], &t[2]), 3) << line;
    for (int v : t) EXPECT_TRUE(v >= 0 && v < 300) << line;
    std::sort(t.begin(), t.end());
    EXPECT_TRUE(triangles.insert(t).second) << line;
  }
  EXPECT_EQ(static_cast<int>(triangles.size()), facts["triangles"].get<int>());
  // Euler: a triangulation of n points with h on the hull has 2n - 2 - h triangles.
  EXPECT_EQ(static_cast<int>(triangles.size()), 2 * 300 - 2 - static_cast<int>(facts["hull"].size()));
}

// What the lines and bands hold is checked against the library below.
TEST_F(Cli, ContourWritesGeoJsonLinesAndBands) {
  // z = x on a 9 x 5 lattice over [0, 4] x [0, 2].
  const std::string file = Write("plane.xyz", Lattice(8, 4, [](int i, int j) { return std::array{i * 0.5, j * 0.5, i * 0.5}; }));
  const std::string out = Path("plane.geojson");
  ASSERT_TRUE(Succeeds("contour " + file + " --levels 1.25,3 --bands -o " + out));
  const nlohmann::json doc = Json(out);
  EXPECT_EQ(doc["type"], "FeatureCollection");
  const auto& features = doc["features"];
  ASSERT_EQ(features.size(), 5u);  // two levels, three bands
  EXPECT_EQ(features[0]["properties"]["level"], 1.25);
  EXPECT_EQ(features[0]["geometry"]["type"], "MultiLineString");
  EXPECT_EQ(features[3]["geometry"]["type"], "MultiPolygon");
  EXPECT_TRUE(features[2]["properties"]["lower"].is_null());
  EXPECT_EQ(features[3]["properties"], nlohmann::json::parse(R"({"lower":1.25,"upper":3})"));
  EXPECT_TRUE(features[4]["properties"]["upper"].is_null());
  // Automatic levels: as many intervals as asked; none at the Z limits 0 and 4.
  ASSERT_TRUE(Succeeds("contour " + file + " --count 4 -o " + out));
  const nlohmann::json counted = Json(out);
  ASSERT_EQ(counted["features"].size(), 3u);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(counted["features"][k]["properties"]["level"], static_cast<double>(k) + 1);
}

TEST_F(Cli, BandsAreMergedPolygonsWithHoles) {
  // A ring of high ground around a pit on a 41 x 41 lattice over [-1, 1]^2.
  const std::string file = Write("crater.xyz", Lattice(40, 40, [](int i, int j) {
    const double x = -1 + i / 20.0, y = -1 + j / 20.0;
    return std::array{x, y, std::exp(-std::pow((std::hypot(x, y) - 0.5) / 0.15, 2))};
  }));
  const std::filesystem::path out = dir_ / "crater.geojson";
  ASSERT_TRUE(Succeeds("contour " + file + " --levels 0.5 --bands -o " + out.string()));
  const nlohmann::json doc = Json(out.string());
  ASSERT_EQ(doc["features"].size(), 3u);
  const auto& below = doc["features"][1]["geometry"]["coordinates"];
  const auto& above = doc["features"][2]["geometry"]["coordinates"];
  // Above 0.5: the ring of high ground, one polygon with an outer ring and a hole.
  ASSERT_EQ(above.size(), 1u);
  ASSERT_EQ(above[0].size(), 2u);
  EXPECT_GT(RingArea(above[0][0]), 0);  // outer rings counter-clockwise
  EXPECT_LT(RingArea(above[0][1]), 0);  // holes clockwise
  const double ring = RingArea(above[0][0]) + RingArea(above[0][1]);
  EXPECT_NEAR(ring, 0.785, 0.03);       // pi (0.625^2 - 0.375^2) for the exact surface
  // Below 0.5: the square less a disk (with its hole), and the pit inside.
  ASSERT_EQ(below.size(), 2u);
  double total = ring;
  for (const auto& polygon : below) {
    for (const auto& r : polygon) {
      EXPECT_EQ(r.front(), r.back());
      total += RingArea(r);
    }
  }
  EXPECT_NEAR(total, 4.0, 4e-12);  // the bands tile the data's square
  EXPECT_EQ(InvalidBandsPerGdal(out), 0);
}

TEST_F(Cli, BandsOfScatteredDataAreValidGeometry) {
  const std::string file = Write("noisy.xyz", Scattered(3000, 21, [](double x, double y) {
    return std::sin(9 * x) * std::cos(7 * y) + 0.1 * std::sin(5000 * x * y);  // and rough noise
  }));
  const std::filesystem::path out = dir_ / "noisy.geojson";
  ASSERT_TRUE(Succeeds("contour " + file + " --count 12 --bands -o " + out.string()));
  EXPECT_EQ(InvalidBandsPerGdal(out), 0);
}

TEST_F(Cli, ApiGivesTheLinesAndBandsTheExportWrites) {
  const std::string file = Write("wave.xyz", Scattered(500, 8, [](double x, double y) { return std::sin(2 * x) * std::cos(3 * y); }, 3, 2));
  const std::string out = Path("wave.geojson");
  ASSERT_TRUE(Succeeds("contour " + file + " --levels -0.5,0,0.25,0.5 --bands -o " + out));
  const nlohmann::json features = Json(out)["features"];

  const orvane::XyzPoints points = orvane::ReadXyzFile(file);
  orvane::DataSet data;
  data.DataAsSparseGridSet(points.x, points.y, points.z);
  const std::vector<double> levels{-0.5, 0, 0.25, 0.5};
  // The command counts a height on a level as above it, unless told --ties exact.
  const auto lines = data.ContourLines(levels, true);
  const auto bands = data.ContourBands(levels, true);
  const auto same = [](const nlohmann::json& coordinates, const orvane::Polyline& line, bool closed) {
    const std::size_t n = line.x.size();
    if (coordinates.size() != n + (closed ? 1 : 0)) return false;
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
      const std::size_t k = i % n;
      if (coordinates[i][0].get<double>() != line.x[k] || coordinates[i][1].get<double>() != line.y[k]) return false;
    }
    return true;
  };
  std::size_t f = 0;
  for (std::size_t k = 0; k < levels.size(); ++k, ++f) {
    const auto& lineSet = features.at(f)["geometry"]["coordinates"];
    ASSERT_EQ(lineSet.size(), lines[k].size()) << "level " << k;
    ASSERT_FALSE(lines[k].empty());
    for (std::size_t p = 0; p < lines[k].size(); ++p) EXPECT_TRUE(same(lineSet[p], lines[k][p], false)) << k << " " << p;
  }
  for (std::size_t k = 0; k < bands.size(); ++k) {
    if (bands[k].empty()) continue;
    const auto& feature = features.at(f++);
    if (k > 0) {
      EXPECT_EQ(feature["properties"]["lower"].get<double>(), levels[k - 1]);
    }
    const auto& polygons = feature["geometry"]["coordinates"];
    ASSERT_EQ(polygons.size(), bands[k].size()) << "band " << k;
    for (std::size_t p = 0; p < polygons.size(); ++p) {
      ASSERT_EQ(polygons[p].size(), bands[k][p].rings.size());
      for (std::size_t r = 0; r < polygons[p].size(); ++r) EXPECT_TRUE(same(polygons[p][r], bands[k][p].rings[r], true));
    }
  }
  EXPECT_EQ(f, features.size());
}

TEST_F(Cli, IntervalLevelsAreMultiplesOfTheIntervalPlusTheOffset) {
  // z = 100 + 20 x over [0, 1] x [0, 1].
  const std::string file = Write("ramp.xyz", Lattice(10, 4, [](int i, int j) { return std::array{i / 10.0, j / 4.0, 100.0 + 2 * i}; }));
  const std::string out = Path("c.geojson");
  const auto levels = [&](const std::string& options) {
    std::vector<double> found;
    EXPECT_TRUE(Succeeds("contour " + file + " " + options + " -o " + out));
    const nlohmann::json doc = Json(out);
    for (const auto& feature : doc["features"]) {
      if (feature["properties"].contains("level")) found.push_back(feature["properties"]["level"].get<double>());
    }
    return found;
  };
  const std::pair<double, double> cases[] = {{0.7, 0.05}, {0.7, 0}, {3, -1}, {0.2, 0}, {3e-3, 0.0004}};
  for (const auto& [d, o] : cases) {
    const std::string options = "--interval " + std::to_string(d) + " --offset " + std::to_string(o);
    std::vector<double> expected;
    const auto from = static_cast<long>(std::floor((100 - o) / d)) - 2, to = static_cast<long>(std::ceil((120 - o) / d)) + 2;
    for (long k = from; k <= to; ++k) {
      const double v = o + static_cast<double>(k) * d;
      if (v > 100 + 1e-9 && v < 120 - 1e-9) expected.push_back(v);
    }
    const std::vector<double> found = levels(options);
    ASSERT_EQ(found.size(), expected.size()) << options;
    for (std::size_t k = 0; k < found.size(); ++k) EXPECT_NEAR(found[k], expected[k], 1e-9) << options;
  }
  // Levels fall on the Z limits here and are left out there.
  EXPECT_EQ(levels("--interval 5"), (std::vector<double>{105, 110, 115}));
  EXPECT_EQ(levels("--levels 100,110,120"), (std::vector<double>{110}));
  // Written as typed: 100.6, not 100.60000000000001 (100 + 503 x 0.2).
  levels("--interval 0.2");
  const std::string geojson = Slurp(out);
  EXPECT_THAT(geojson, HasSubstr("{\"level\":100.6}"));
  EXPECT_THAT(geojson, HasSubstr("{\"level\":114.2}"));
  for (std::size_t at = geojson.find("\"level\":"); at != std::string::npos; at = geojson.find("\"level\":", at + 1)) {
    const std::string value = geojson.substr(at + 8, geojson.find('}', at) - at - 8);
    EXPECT_LE(value.size(), 5u) << value;  // 100.2 to 119.8
  }
  // Bands the data do not reach are not written: one band below 130, none above it.
  ASSERT_TRUE(Succeeds("contour " + file + " --levels 130 --bands -o " + out));
  EXPECT_EQ(Json(out)["features"].size(), 2u);
}

// --- Output files -----------------------------------------------------------------------

// Output through a temporary beside the target, renamed into place at the end.
class CliOutput : public Cli {
 protected:
  void SetUp() override {
    Cli::SetUp();
    input_ = Write("in.xyz", Scattered(2000, 5, [](double x, double y) { return x * y; }));
  }
  // Every command that writes, each aimed at `stem` with an extension it writes.
  std::vector<std::pair<std::string, std::string>> Writers(const std::string& stem) const {
    return {{"triangulate " + input_ + " -o " + stem + ".csv", stem + ".csv"},
            {"contour " + input_ + " --bands -o " + stem + ".geojson", stem + ".geojson"},
            {"grid " + input_ + " --method idw --intervals 30 -o " + stem + ".grd", stem + ".grd"}};
  }
  std::string input_;
};

TEST_F(CliOutput, AFullDiskLeavesTheOldFileIntact) {
  for (const auto& [command, target] : Writers(Path("out"))) {
    std::ofstream(target) << "old contents\n";
    const std::set<std::string> before = Listing(dir_);
    // At most 4 blocks of output: every command here writes more.
    const Outcome run = Shell("sh -c 'ulimit -f 4; exec " + std::string(ORVANE_CLI_PATH) + " " + command + "' 2>&1");
    EXPECT_EQ(run.status, 2) << command << run.out;
    EXPECT_THAT(run.out, HasSubstr(target + ": cannot write the file"));
    EXPECT_EQ(Slurp(target), "old contents\n") << command;
    EXPECT_EQ(Listing(dir_), before) << command;  // no temporary left behind
  }
}

TEST_F(CliOutput, TargetsThatCannotBeReplacedAreRefusedUpFront) {
  for (const auto& [command, locked] : Writers(Path("locked"))) {
    std::ofstream(locked) << "keep\n";
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read | std::filesystem::perms::group_read);
    const Outcome run = Orvane(command);
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.out, "orvane: " + locked + ": cannot replace the file: it is read-only\n") << command;
    EXPECT_EQ(Slurp(locked), "keep\n");
  }
  for (const auto& [command, folder] : Writers(Path("folder"))) {
    std::filesystem::create_directory(folder);
    std::ofstream(std::filesystem::path(folder) / "inside") << "x";
    const Outcome run = Orvane(command);
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.out, "orvane: " + folder + ": cannot replace the file (Is a directory)\n") << command;
    EXPECT_EQ(Listing(folder), std::set<std::string>{"inside"});
  }
  for (const auto& [command, nowhere] : Writers(Path("missing/out"))) {
    const Outcome run = Orvane(command);
    EXPECT_EQ(run.out, "orvane: " + nowhere + ": cannot create the file (No such file or directory)\n") << command;
  }
  EXPECT_FALSE(std::filesystem::exists(dir_ / "missing"));
}

TEST_F(CliOutput, AGoodRunReplacesTheTargetKeepingItsMode) {
  const std::string target = Path("tri.csv");
  std::ofstream(target) << "old\n";
  const auto mode = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write | std::filesystem::perms::others_read;
  std::filesystem::permissions(target, mode);
  ASSERT_TRUE(Succeeds("triangulate " + input_ + " -o " + target));
  EXPECT_NE(Slurp(target).substr(0, 4), "old\n");
  EXPECT_EQ(std::filesystem::status(target).permissions(), mode);
  EXPECT_EQ(Listing(dir_), (std::set<std::string>{"in.xyz", "tri.csv"}));
}

TEST_F(Cli, DevicesAndPipesAreWrittenStraightThrough) {
  for (const std::string& command :
       std::vector<std::string>{"render --sample", "contour " + kMeuse, "grid " + kMeuse + " --method idw", "triangulate " + kMeuse}) {
    EXPECT_TRUE(Succeeds(command + " -o /dev/null"));
  }
  // Through a named pipe, the same bytes as the file, and nothing left beside it.
  const std::string file = Path("g.csv"), pipe = Path("pipe");
  ASSERT_TRUE(Succeeds("grid " + kMeuse + " --method idw --intervals 3 -o " + file));
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const Outcome streamed = Shell("(cat " + pipe + " > " + Path("read.csv") + " &) ; " + std::string(ORVANE_CLI_PATH) + " grid " +
                                 kMeuse + " --method idw --intervals 3 -o " + pipe + " && sleep 0.2");
  EXPECT_EQ(streamed.status, 0) << streamed.out;
  EXPECT_EQ(Slurp(Path("read.csv")), Slurp(file));
  EXPECT_EQ(Listing(dir_), (std::set<std::string>{"g.csv", "pipe", "read.csv"}));
  // A block device keeps the old protection.
  if (std::filesystem::is_block_file("/dev/loop0")) {
    EXPECT_THAT(Orvane("triangulate " + kMeuse + " -o /dev/loop0").out, HasSubstr("it is not a regular file"));
  }
}

// --- Grids ------------------------------------------------------------------------------

TEST_F(Cli, GridWritesCsvWithTheXIndexOuter) {
  const std::string file = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n0.5 0.5 9\n");
  const std::string out = Path("g.csv");
  ASSERT_TRUE(Succeeds("grid " + file + " --method idw --intervals 2 -o " + out));
  const std::vector<std::string> lines = Lines(out);
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_EQ(lines[0], "0,0,1");      // exact hits keep the data
  EXPECT_THAT(lines[1], StartsWith("0,0.5,"));
  EXPECT_EQ(lines[4], "0.5,0.5,9");
  EXPECT_EQ(lines[8], "1,1,4");
  // Power 0 gives the plain mean away from the data.
  ASSERT_TRUE(Succeeds("grid " + file + " --method idw --power 0 --intervals 2 -o " + out));
  EXPECT_EQ(Lines(out)[1], "0,0.5,3.8");
  // Explicit limits replace the data's; the others stay.
  ASSERT_TRUE(Succeeds("grid " + file + " --method idw --intervals 4 --xmin -1 -o " + out));
  EXPECT_THAT(Lines(out)[0], StartsWith("-1,0,"));
  EXPECT_THAT(Lines(out)[24], StartsWith("1,1,"));
}

TEST_F(Cli, GridStopsCleanlyWhenInterrupted) {
  const std::string file = Write("big.xyz", Scattered(20000, 4, [](double x, double y) { return x - y; }));
  const std::string out = Path("big.csv");
  // Minutes of work, interrupted after a moment.
  const Outcome run = Shell("sh -c '" + std::string(ORVANE_CLI_PATH) + " grid " + file + " --method idw --intervals 3000 -o " +
                            out + " & pid=$!; sleep 1; kill -INT $pid; wait $pid; echo status=$?' 2>&1");
  EXPECT_THAT(run.out, HasSubstr("status=130"));
  EXPECT_THAT(run.out, HasSubstr("The resampling was interrupted."));
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_FALSE(std::filesystem::exists(out + ".partial"));
}

TEST_F(Cli, LocalInverseDistanceBlanksNodesWithNoPointInRange) {
  // Points on the left half only; a radius of 1 leaves the right half of the grid blank.
  const std::string file = Write("left.xyz", Lattice(5, 10, [](int i, int j) { return std::array{1.0 * i, 1.0 * j, 1.0 * (i + j)}; }));
  const std::string out = Path("l.csv");
  ASSERT_TRUE(Succeeds("grid " + file + " --method idw --max-points 4 --radius 1 --xmax 10 --intervals 10 -o " + out));
  std::size_t blank = 0;
  for (const std::string& line : Lines(out)) blank += line.back() == ',' ? 1u : 0u;
  EXPECT_EQ(blank, 4u * 11u);  // X = 7 .. 10: farther than 1 from every point
}

TEST_F(Cli, GridFilesGoThroughEveryCommandWithTheirBlanksAndCrs) {
  const std::string points = Write("tri.xyz", TrianglePoints());
  const std::string grd = Path("t.grd");
  // 11 x 11 nodes, those above the diagonal outside the hull: 55 of them, blank unless the
  // method extrapolates (as inverse distance and kriging do unless told).
  const auto blanks = [&](const std::string& method) {
    EXPECT_TRUE(Succeeds("grid " + points + " --method " + method + " --intervals 10 --crs EPSG:28992 -o " + grd));
    return nlohmann::json::parse(Orvane("info --json " + grd).out)["blanks"];
  };
  for (const std::string method : {"nn --extrapolate", "idw", "kriging --no-block --model spherical --nugget 0", "kriging --range 3"}) {
    EXPECT_EQ(blanks(method), 0) << method;
  }
  for (const std::string method : {"idw --blank-outside-hull", "kriging --blank-outside-hull", "nn --gradients --tautness 2", "nn"}) {
    EXPECT_EQ(blanks(method), 55) << method;
  }
  EXPECT_EQ(Lines(grd).at(4), "0 20");  // the DSAA header's Z range leaves the blanks out
  const std::string info = Output("info " + grd);
  EXPECT_THAT(info, HasSubstr("grid       11 x 11 nodes\n"));
  EXPECT_THAT(info, HasSubstr("x          0 .. 10\n"));
  EXPECT_THAT(info, HasSubstr("blank      55 cells\ncrs        EPSG:28992\n"));
  EXPECT_EQ(nlohmann::json::parse(Orvane("info --json " + grd).out)["columns"], 11);
  // The grid's own CSV and DSAA output read back as they are; the CRS carries through.
  const std::string csv = Path("t.csv"), tif = Path("t.tif");
  ASSERT_TRUE(Succeeds("grid " + grd + " --method nn --intervals 10 -o " + csv));
  EXPECT_THAT(Orvane("info " + csv).out, HasSubstr("blank      55 cells\n"));
  ASSERT_TRUE(Succeeds("grid " + grd + " --method idw --intervals 10 -o " + tif));
  EXPECT_THAT(Shell("gdalinfo " + tif).out, HasSubstr("ID[\"EPSG\",28992]]"));
  // Contours carry the grid's CRS into GeoJSON, where GDAL finds it.
  const std::string geojson = Path("t.geojson"), local = Path("local.geojson");
  ASSERT_TRUE(Succeeds("contour " + grd + " --count 5 -o " + geojson));
  EXPECT_THAT(Shell("ogrinfo -so -al " + geojson + " 2>&1").out, HasSubstr("ID[\"EPSG\",28992]]"));
  // --crs gives another; one with no EPSG code goes in as WKT.
  ASSERT_TRUE(Succeeds("contour " + grd + " --crs EPSG:4326 -o " + geojson));
  EXPECT_THAT(Shell("ogrinfo -so -al " + geojson).out, HasSubstr("ID[\"EPSG\",4326]]"));
  ASSERT_TRUE(Succeeds("contour " + grd + " --crs '+proj=tmerc +lat_0=0 +lon_0=7 +k=1 +x_0=0 +y_0=0 +ellps=GRS80' -o " + local));
  EXPECT_THAT(Shell("ogrinfo -so -al " + local).out, HasSubstr("METHOD[\"Transverse Mercator\""));
  // The grid draws as it is.
  ASSERT_TRUE(Succeeds("render " + grd + " --plot-type 2d --size 300x300 -o " + Path("t.png")));
}

TEST_F(Cli, GridsAreWrittenInTheFormatTheirExtensionNames) {
  const std::string points = Write("tri.xyz", TrianglePoints());
  const std::pair<std::string, std::string> formats[] = {{".tif", "GTiff"}, {".nc", "netCDF"}, {".asc", "AAIGrid"}, {".grd", "GSAG"}};
  for (const auto& [extension, driver] : formats) {
    const std::string out = Path("g" + extension);
    ASSERT_TRUE(Succeeds("grid " + points + " --method nn --intervals 20 --crs EPSG:28992 -o " + out));
    const Outcome gdal = Shell("gdalinfo -json " + out);
    ASSERT_EQ(gdal.status, 0) << gdal.out;
    const nlohmann::json facts = nlohmann::json::parse(gdal.out);
    EXPECT_EQ(facts["driverShortName"], driver);
    EXPECT_EQ(facts["size"], nlohmann::json::array({21, 21})) << extension;
    EXPECT_EQ(facts["geoTransform"], nlohmann::json::parse("[-0.25, 0.5, 0, 10.25, 0, -0.5]")) << extension;
    EXPECT_THAT(facts["coordinateSystem"]["wkt"].get<std::string>(), HasSubstr("Amersfoort / RD New")) << extension;
  }
  EXPECT_THAT(Shell("gdalinfo " + Path("g.tif")).out, HasSubstr("COMPRESSION=DEFLATE"));
  // Standard output: CSV by default, a text format on request, a PNG.
  const Outcome text = Shell(std::string(ORVANE_CLI_PATH) + " grid " + points + " --method idw --intervals 1 -o - 2>/dev/null");
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.out, StartsWith("0,0,"));
  EXPECT_EQ(std::count(text.out.begin(), text.out.end(), '\n'), 4);
  const Outcome asc = Shell(std::string(ORVANE_CLI_PATH) + " grid " + points + " --method idw --intervals 1 -o - --format asc");
  EXPECT_THAT(asc.out, StartsWith("ncols        2\n"));
  const Outcome png = Shell(std::string(ORVANE_CLI_PATH) + " render --sample --size 64x48 -o - | head -c 8 | od -An -tx1");
  EXPECT_EQ(png.out, " 89 50 4e 47 0d 0a 1a 0a\n");
}

// --- Pictures and States ----------------------------------------------------------------

TEST_F(Cli, RenderDrawsTheSampleAndDataFilesToPng) {
  const std::string out = Path("s.png");
  ASSERT_TRUE(Succeeds("render --sample --size 320x240 -o " + out));
  const Png png = ReadPng(out);
  ASSERT_EQ(png.width, 320);
  ASSERT_EQ(png.height, 240);
  EXPECT_EQ(png.At(0, 0), 0xFFFFFFu);  // white background in the corners
  EXPECT_EQ(png.At(319, 239), 0xFFFFFFu);
  EXPECT_GT(ColouredPixels(png), 2000);

  // Scattered points, a grid file, and a resampled surface, in 2-D and 3-D.
  const std::string points = Write("p.xyz", Scattered(200, 9, [](double x, double y) { return std::sin(5 * x) * y; }));
  const std::string grid = Write("g.grd", "DSAA\n3 3\n0 1\n0 1\n0 4\n0 1 2\n1 2 3\n2 3 4\n");
  for (const std::string& arguments :
       {points + " --plot-type 2d", grid + " --lighting --mesh --colormap land-sea-dark", points + " --resample idw --intervals 20",
        points + " --markers --no-fill --rotation 90,0,0 --zoom 1.5 --contours 5 --interpolate-colors --title T"}) {
    EXPECT_TRUE(Succeeds("render " + arguments + " --size 160x120 -o " + out));
    EXPECT_EQ(ReadPng(out).width, 160) << arguments;
  }
}

TEST_F(Cli, FillAndTiesDefaultToExactBandsAndWholeContoursAndKeepWhatAStateHolds) {
  // What the command stores for each choice: exact bands and ties above unless told.
  const auto stored = [&](const std::string& options) {
    const orvane::PropertyBag bag = Stored("--sample " + options);
    return std::array{bag.ReadProperty("Contouring.ExactBands", false), bag.ReadProperty("Contouring.InterpolateColors", false),
                      bag.ReadProperty("Contouring.TiesAbove", false)};
  };
  EXPECT_EQ(stored(""), (std::array{true, false, true}));
  EXPECT_EQ(stored("--fill flat --ties exact"), (std::array{false, false, false}));
  EXPECT_EQ(stored("--fill smooth"), (std::array{false, true, true}));
  EXPECT_EQ(stored("--interpolate-colors"), (std::array{false, true, true}));
  // A state's own choice stands unless the options name another.
  const std::string state = Path("f.state");
  ASSERT_TRUE(Succeeds("state --sample --fill flat --ties exact --formatting-only -o " + state));
  EXPECT_EQ(stored("--state " + state), (std::array{false, false, false}));
}

TEST_F(Cli, ProjectionsAreOffUnlessAskedForAndAxisTitlesComeFromTheOptions) {
  const auto shown = [&](const std::string& options) {
    const orvane::PropertyBag b = Stored("--sample " + options);
    return std::array{b.ReadProperty("Datasets.DataSet1.ViewTop.Visible", true),
                      b.ReadProperty("Datasets.DataSet1.ViewBottom.Visible", true)};
  };
  EXPECT_EQ(shown(""), (std::array{false, false}));
  EXPECT_EQ(shown("--projections top"), (std::array{true, false}));
  EXPECT_EQ(shown("--projections bottom"), (std::array{false, true}));
  EXPECT_EQ(shown("--projections both"), (std::array{true, true}));
  const orvane::PropertyBag titled = Stored("--sample --xlabel Easting --ylabel Northing --zlabel 'Height (m)'");
  EXPECT_EQ(titled.ReadProperty("Axes.XAxis.Title", std::string()), "Easting");
  EXPECT_EQ(titled.ReadProperty("Axes.YAxis.Title", std::string()), "Northing");
  EXPECT_EQ(titled.ReadProperty("Axes.ZAxis.Title", std::string()), "Height (m)");
  EXPECT_TRUE(titled.ReadProperty("Axes.ZAxis.TitleVisible", false));
  // Tick labels with the decimals their ticks need: the sample's X and Y run 0 to 4 in
  // steps of 0.4, its levels in steps of 0.064.
  EXPECT_FALSE(titled.ReadProperty("Axes.UseMasterProperties", true));
  EXPECT_EQ(titled.ReadProperty("Axes.XAxis.LabelsFormat", std::string()), "0.0");
  EXPECT_EQ(titled.ReadProperty("Axes.ZAxis.LabelsFormat", std::string()), "0.000");
  // The command's lighting values, for when lighting is switched on.
  EXPECT_EQ(titled.ReadProperty("LightingIntensityAmbient", 0.0), 0.45);
  EXPECT_EQ(titled.ReadProperty("LightingIntensitySpotlight", 0.0), 0.6);
  EXPECT_EQ(titled.ReadProperty("LightingMaterialShininess", 0.0), 1.0);
}

TEST_F(Cli, RenderLevelsColourMapsAspectAndSamples) {
  // Z from 1 to 1000 over a square; the levels and colours the command stores.
  const std::string points = Write("z.xyz", "0 0 1\n1 0 10\n0 1 100\n1 1 1000\n0.5 0.5 50\n");
  const auto levels = [](const orvane::PropertyBag& b) {
    std::vector<std::pair<double, std::int32_t>> v;
    for (std::int32_t i = 0; i < b.ReadProperty("Contouring.Contours.Count", std::int32_t{0}); ++i) {
      const std::string key = "Contouring.Contours.Contour" + std::to_string(i) + ".";
      v.emplace_back(b.ReadProperty(key + "Value", 0.0), b.ReadProperty(key + "Color", std::int32_t{0}));
    }
    return v;
  };
  // Evenly in log10 Z, two significant digits, coloured by order from viridis's ends
  // (#440154, #21908C, #FDE725) rather than by value, which would crowd them at its foot.
  const orvane::PropertyBag logged = Stored(points + " --levels-log 3");
  EXPECT_EQ(levels(logged), (std::vector<std::pair<double, std::int32_t>>{{5.6, 0x540144}, {32, 0x8C9021}, {180, 0x25E7FD}}));
  // Spacing and offset as orvane contour puts them, a list as given.
  auto values = [&](const std::string& options) {
    std::vector<double> v;
    for (const auto& [value, colour] : levels(Stored(points + " " + options))) v.push_back(value);
    return v;
  };
  EXPECT_EQ(values("--interval 300 --offset 50"), (std::vector<double>{50, 350, 650, 950}));
  EXPECT_EQ(values("--levels 700,2,40"), (std::vector<double>{2, 40, 700}));
  // A table of data values colours each level at its value: 0 blue to 1000 red.
  const std::string table = Write("t.txt", "# value colour\n0 #0000FF\n1000 #FF0000\n");
  const orvane::PropertyBag tabled = Stored(points + " --levels 250,500,750 --colormap " + table);
  EXPECT_EQ(levels(tabled), (std::vector<std::pair<double, std::int32_t>>{{250, 0xBF0040}, {500, 0x800080}, {750, 0x4000BF}}));
  EXPECT_EQ(tabled.ReadProperty("Contouring.ColorMap", std::int32_t{-1}), orvane::orvColorMapUser);

  // Equal aspect and 4 samples unless told; a long, thin domain is stretched.
  EXPECT_TRUE(logged.ReadProperty("Axes.KeepXYAspectRatio", false));
  EXPECT_EQ(logged.ReadProperty("Samples", 0), 4);
  EXPECT_TRUE(logged.ReadProperty("FitPlotArea", false));
  const std::string thin = Write("thin.xyz", "0 0 1\n100 0 2\n0 1 3\n100 1 4\n");
  EXPECT_FALSE(Stored(thin).ReadProperty("Axes.KeepXYAspectRatio", true));
  const orvane::PropertyBag told = Stored(thin + " --aspect equal --samples 1");
  EXPECT_TRUE(told.ReadProperty("Axes.KeepXYAspectRatio", false));
  EXPECT_EQ(told.ReadProperty("Samples", 0), 1);
}

TEST_F(Cli, LightingKeepsTheColourMapsHuesAndShadesTheSlopes) {
  // A cone on flat ground, drawn unlit and lit from the same place: every coloured pixel
  // keeps its hue (the RGB direction), and the slopes turned away darken.
  const std::string cone = Write("cone.xyz", Lattice(40, 40, [](int i, int j) {
    return std::array{1.0 * i, 1.0 * j, std::max(0.0, 12.0 - std::hypot(i - 20.0, j - 20.0))};
  }));
  const std::string unlit = Path("u.png"), lit = Path("l.png");
  for (const std::string fill : {"bands", "flat"}) {
    const std::string options = " --size 320x240 --no-lines --fill " + fill;
    ASSERT_TRUE(Succeeds("render " + cone + options + " -o " + unlit));
    ASSERT_TRUE(Succeeds("render " + cone + options + " --lighting -o " + lit));
    const Png u = ReadPng(unlit), l = ReadPng(lit);
    ASSERT_EQ(u.width, l.width);
    std::vector<double> angles;
    int darker = 0;
    for (int y = 0; y < u.height; ++y) {
      for (int x = 0; x < u.width; ++x) {
        const std::uint32_t a = u.At(x, y), b = l.At(x, y);
        const double ar = a & 0xFF, ag = a >> 8 & 0xFF, ab = a >> 16 & 0xFF;
        const double br = b & 0xFF, bg = b >> 8 & 0xFF, bb = b >> 16 & 0xFF;
        if (std::max({ar, ag, ab}) - std::min({ar, ag, ab}) < 60) continue;  // not the coloured surface
        const double na = std::sqrt(ar * ar + ag * ag + ab * ab), nb = std::sqrt(br * br + bg * bg + bb * bb);
        if (nb < 30) continue;  // too dark to have a hue
        angles.push_back(std::acos(std::min(1.0, (ar * br + ag * bg + ab * bb) / (na * nb))) * 180 / 3.14159265358979);
        darker += nb < 0.8 * na;
      }
    }
    ASSERT_GT(angles.size(), 5000u);
    std::sort(angles.begin(), angles.end());
    EXPECT_LT(angles[angles.size() * 9 / 10], 2.0) << fill << ": hues pushed towards white";
    EXPECT_GT(darker, static_cast<int>(angles.size() / 10)) << fill << ": no shading";
  }
}

TEST_F(Cli, StateSavesWhatRenderDrawsAgain) {
  const std::string state = Path("s.state"), a = Path("a.png"), b = Path("b.png"), formatting = Path("f.state");
  ASSERT_TRUE(Succeeds("state --sample --plot-type 2d --title Saved -o " + state));
  // The state keeps the zoom it was saved with (1); a render fits the plot unless told.
  ASSERT_TRUE(Succeeds("render --sample --plot-type 2d --title Saved --zoom 1 --size 200x150 -o " + a));
  // The state alone (it holds the data) draws the same picture.
  ASSERT_TRUE(Succeeds("render --state " + state + " --size 200x150 -o " + b));
  const Png pa = ReadPng(a), pb = ReadPng(b);
  ASSERT_EQ(pb.width, 200);
  EXPECT_EQ(pa.rgb, pb.rgb);
  // Options given with it win; the formatting-only state keeps a FILE's data.
  ASSERT_TRUE(Succeeds("state --sample --no-legend --formatting-only -o " + formatting));
  EXPECT_TRUE(Succeeds("render --sample --state " + formatting + " --plot-type 3d --size 120x90 -o " + b));
}

TEST_F(Cli, NaturalNeighbourMapsStopAtTheDataHullUnlessTheyExtrapolate) {
  const std::string points = Write("tri.xyz", TrianglePoints());
  const auto coloured = [&](const std::string& options) {
    const std::string out = Path("nn.png");
    EXPECT_TRUE(Succeeds("render " + points + " --plot-type 2d --size 300x300 --no-legend --resample nn --intervals 40 " + options +
                         " -o " + out));
    return ColouredPixels(ReadPng(out));
  };
  const int blank = coloured(""), full = coloured("--extrapolate"), asked = coloured("--blank-outside-hull");
  // The hull is half the box: the blanked map about half the extrapolated one.
  EXPECT_NEAR(static_cast<double>(blank) / full, 0.5, 0.06) << blank << " " << full;
  EXPECT_EQ(asked, blank);
}

// --- Geostatistics ----------------------------------------------------------------------

TEST_F(Cli, VariogramsAndKrigingDefaultsFollowTheData) {
  const nlohmann::json v = nlohmann::json::parse(Output("variogram --json " + kMeuse));
  ASSERT_EQ(v["bins"].size(), 15u);
  EXPECT_EQ(v["bins"][0]["pairs"], 57);
  EXPECT_NEAR(v["bins"][0]["distance"].get<double>(), 79.292437455826644, 1e-9);
  ASSERT_EQ(v["models"].size(), 4u);
  EXPECT_EQ(v["models"][0]["model"], "exponential");
  for (std::size_t k = 1; k < 4; ++k) EXPECT_LE(v["models"][k - 1]["sse"].get<double>(), v["models"][k]["sse"].get<double>());
  const Outcome text = Orvane("variogram " + kMeuse);
  EXPECT_THAT(text.out, HasSubstr("79.2924       37363         57\n"));
  EXPECT_THAT(text.out, HasSubstr("exponential  9486.6        163285        1145.13       1.79147e+06\n"));
  // Kriging without a model takes the best fit, and says so; a given model wins.
  const std::string out = Path("k.csv"), variance = Path("v.csv");
  EXPECT_THAT(Output("grid " + kMeuse + " --method kriging --intervals 4 -o " + out),
              HasSubstr("orvane: kriging with the fitted exponential model: nugget 9486.6, sill 172772, range 1145.13"));
  const std::string given = " --method kriging --model spherical --nugget 0 --sill 1 --range 900 --intervals 4 -o ";
  EXPECT_THAT(Orvane("grid " + kMeuse + given + out).out, Not(HasSubstr("fitted")));
  // What is not given is fitted: here the spherical model's nugget, sill and range.
  EXPECT_THAT(Orvane("grid " + kMeuse + " --method kriging --model spherical --intervals 4 -o " + out).out,
              HasSubstr("orvane: kriging with the spherical model: nugget 24806.6 (fitted), sill 159556 (fitted), "
                        "range 831.117 (fitted)"));
  // The kriging variance, on the same nodes in the same format.
  ASSERT_TRUE(Succeeds("grid " + kMeuse + " --method kriging --intervals 4 --variance " + variance + " -o " + out));
  EXPECT_EQ(Lines(variance).size(), 25u);
  // Values that do not vary fit no model: the bins are printed, and kriging keeps its
  // defaults, which reproduce the constant.
  std::string lattice = "x,y,z\n";
  for (int k = 0; k < 25; ++k) lattice += std::to_string(k % 5) + "," + std::to_string(k / 5) + ",5\n";
  const std::string flat = Write("flat.csv", lattice);
  EXPECT_THAT(Output("variogram " + flat), HasSubstr("orvane: no model was fitted: Every semivariance is 0: the values do not vary"));
  ASSERT_TRUE(Succeeds("grid " + flat + " --method kriging --intervals 2 -o " + out));
  for (const std::string& line : Lines(out)) EXPECT_NEAR(std::stod(line.substr(line.rfind(',') + 1)), 5.0, 1e-12) << line;
}

TEST_F(Cli, VariogramPlotDrawsTheBinsAndEveryFittedCurve) {
  const std::string out = Path("v.png");
  ASSERT_TRUE(Succeeds("variogram " + kMeuse + " --plot " + out + " --size 500x400"));
  const Png png = ReadPng(out);
  ASSERT_EQ(png.width, 500);
  ASSERT_EQ(png.height, 400);
  const auto count = [&](std::uint32_t colour) {
    int n = 0;
    for (int y = 0; y < png.height; ++y) {
      for (int x = 0; x < png.width; ++x) n += png.At(x, y) == colour;
    }
    return n;
  };
  // Each curve in its colour (best first: blue, orange, green, pink), and the dark dots.
  for (const std::uint32_t colour : {0xB27200u, 0x009FE6u, 0x739E00u, 0xA779CCu}) EXPECT_GT(count(colour), 150) << std::hex << colour;
  EXPECT_GT(count(0x282828), 15 * 20);  // fifteen dots
}

TEST_F(Cli, CrossValidationSummarisesAndWritesTheResiduals) {
  // gstat's krige.cv for this model: me 1.66299, rmse 226.804, msdr 0.929825.
  const nlohmann::json summary = nlohmann::json::parse(
      Output("cv " + kMeuse + " --method kriging --model spherical --nugget 20000 --sill 170000 --range 1000 --no-block --json"));
  EXPECT_EQ(summary["points"], 155);
  EXPECT_NEAR(summary["me"].get<double>(), 1.6629864426985346, 1e-9);
  EXPECT_NEAR(summary["rmse"].get<double>(), 226.80433110518095, 1e-9);
  EXPECT_NEAR(summary["medae"].get<double>(), 80.039954218711273, 1e-9);
  EXPECT_NEAR(summary["msdr"].get<double>(), 0.92982470293801156, 1e-9);
  // Natural neighbour leaves the hull's points out, as its grid blanks outside the hull.
  const Outcome nn = Orvane("cv " + kMeuse + " --method nn");
  EXPECT_THAT(nn.out, HasSubstr("leave-one-out cross-validation by natural neighbour of 155 points\n"
                                "12 points have no estimate (outside the others' hull), 143 counted\n"
                                "mean error                     -22.2545\n"));
  EXPECT_THAT(nn.out, Not(HasSubstr("deviation")));
  const nlohmann::json idw = nlohmann::json::parse(Orvane("cv " + kMeuse + " --method idw --json").out);
  EXPECT_FALSE(idw.contains("msdr"));
  // Residuals per point; the hull's points keep their row with empty estimates.
  const std::string residuals = Path("r.csv");
  ASSERT_TRUE(Succeeds("cv " + kMeuse + " --method nn -o " + residuals));
  const std::vector<std::string> rows = Lines(residuals);
  ASSERT_EQ(rows.size(), 156u);
  EXPECT_EQ(rows[0], "x,y,observed,predicted,residual");
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](const std::string& r) { return r.ends_with(",,"); }), 12);
  const Outcome kriged = Orvane("cv " + kMeuse + " --method kriging --model linear --nugget 0 --sill 100000 --range 2000 -o -");
  EXPECT_THAT(kriged.out, StartsWith("x,y,observed,predicted,residual,variance,zscore\n181072,333611,1022,"));
}

TEST_F(Cli, RenderShowsOnlyWhatTheKrigingStandardErrorSupports) {
  const std::string out = Path("se.png");
  const auto render = [&](const std::string& options) {
    const std::string said = Output("render " + kMeuse + " --plot-type 2d --size 300x300 --no-legend --resample kriging " +
                                    "--model spherical --nugget 20000 --sill 170000 --range 1000 --intervals 10 " + options +
                                    " -o " + out);
    return std::make_pair(said, ColouredPixels(ReadPng(out)));
  };
  const auto [all, full] = render("");
  const auto [none, kept] = render("--variance 1e9");
  const auto [some, masked] = render("--variance 250");
  EXPECT_EQ(none, "orvane: 0 of 121 cells have a kriging standard error above 1e+09 and are left blank\n");
  EXPECT_NEAR(kept, full, full / 20);  // the same map (a grid's cells may split along the other diagonal)
  EXPECT_THAT(some, HasSubstr(" of 121 cells have a kriging standard error above 250 and are left blank"));
  EXPECT_LT(masked, full * 2 / 3);
  EXPECT_GT(masked, full / 10);
  const Outcome nothing = Orvane("render " + kMeuse + " --resample kriging --variance 1 -o " + out);
  EXPECT_EQ(nothing.status, 2);
  EXPECT_THAT(nothing.out, HasSubstr("orvane: --variance 1 leaves no cell to draw: the least standard error is "));
}

}  // namespace
