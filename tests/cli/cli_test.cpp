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
#include "orvane/data/data_file.h"
#include "orvane/data/data_set.h"
#include "orvane/data/xyz_file.h"

namespace {

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

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("orvane_cli_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::string Write(const std::string& name, const std::string& text) {
    const std::string path = (dir_ / name).string();
    std::ofstream(path) << text;
    return path;
  }
  std::filesystem::path dir_;
};

TEST_F(Cli, VersionHelpAndUsageErrors) {
  const Outcome version = Orvane("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("orvane ", 0), 0u);
  const Outcome help = Orvane("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("info"), std::string::npos);
  EXPECT_NE(help.out.find("triangulate"), std::string::npos);
  EXPECT_EQ(Orvane("bogus").status, 2);
  EXPECT_EQ(Orvane("info").status, 2);  // FILE is required
}

TEST_F(Cli, InfoReportsCountsLimitsAndHullAsJson) {
  const std::string file = Write("square.xyz",
                                 "x y z\n0 0 1\n2 0 2\n2 3 3\n0 3 4\n1 1.5 -5\n");
  const Outcome run = Orvane("info " + file + " --json");
  ASSERT_EQ(run.status, 0) << run.out;
  const nlohmann::json facts = nlohmann::json::parse(run.out);
  EXPECT_EQ(facts["points"], 5);
  EXPECT_EQ(facts["triangles"], 4);
  EXPECT_EQ(facts["xmin"], 0.0);
  EXPECT_EQ(facts["xmax"], 2.0);
  EXPECT_EQ(facts["ymax"], 3.0);
  EXPECT_EQ(facts["zmin"], -5.0);
  EXPECT_EQ(facts["zmax"], 4.0);
  EXPECT_EQ(facts["hull"], nlohmann::json::parse("[[0,0],[2,0],[2,3],[0,3]]"));
  const Outcome text = Orvane("info " + file);
  EXPECT_EQ(text.status, 0);
  EXPECT_NE(text.out.find("points     5"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("triangles  4"), std::string::npos);
}

TEST_F(Cli, MalformedAndMissingFilesExitWithStatusTwo) {
  const std::string bad = Write("bad.xyz", "0 0 1\n1 0 2\n1 1\n");
  const Outcome run = Orvane("info " + bad);
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.out.find("bad.xyz:3: expected 3 numbers (X, Y, Z), found 2 fields"),
            std::string::npos)
      << run.out;
  const Outcome missing = Orvane("info " + (dir_ / "none.xyz").string());
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.out.find("cannot open the file"), std::string::npos);
}

TEST_F(Cli, HostileInputIsReadOrRefusedSafely) {
  // A byte-order mark and CR line endings of either kind: all four points count.
  const std::string marked = Write("bom.xyz", "\xEF\xBB\xBF" "0 0 1\r\n2 0 2\r\r\n2 3 3\n0 3 4\r\n");
  const Outcome bom = Orvane("info --json " + marked);
  ASSERT_EQ(bom.status, 0) << bom.out;
  EXPECT_EQ(nlohmann::json::parse(bom.out)["points"], 4);
  // An endless device is refused after its first MiB, not read into memory.
  const Outcome zero = Orvane("info /dev/zero");
  EXPECT_EQ(zero.status, 2);
  EXPECT_EQ(zero.out, "orvane: /dev/zero:1: the line is longer than 1 MiB\n");
  // Terminal escape codes are quoted escaped, and long lines cut.
  // (A colon where a title sequence has its semicolon, which would separate fields.)
  const std::string escapes = Write("esc.xyz", "0 0 1\n\x1b]0:owned\x07\x1b[2J" + std::string(200, 'A') + " 2 3\n");
  const Outcome esc = Orvane("info " + escapes);
  EXPECT_EQ(esc.status, 2);
  EXPECT_EQ(esc.out.find('\x1b'), std::string::npos);
  EXPECT_NE(esc.out.find("\\x1b]0:owned\\x07\\x1b[2J"), std::string::npos) << esc.out;
  EXPECT_LT(esc.out.size(), 250u);
}

TEST_F(Cli, TriangulateWritesEveryTriangleOnce) {
  std::ostringstream text;
  std::mt19937 random(8);
  std::uniform_real_distribution<double> unit(-50, 50);
  for (int i = 0; i < 300; ++i) text << unit(random) << "," << unit(random) << "," << i << "\n";
  const std::string file = Write("random.xyz", text.str());
  const std::string out = (dir_ / "tri.csv").string();
  ASSERT_EQ(Orvane("triangulate " + file + " -o " + out).status, 0);
  const nlohmann::json facts = nlohmann::json::parse(Orvane("info --json " + file).out);
  std::ifstream csv(out);
  std::set<std::array<int, 3>> triangles;
  std::string line;
  while (std::getline(csv, line)) {
    std::array<int, 3> t{};
    ASSERT_EQ(std::sscanf(line.c_str(), "%d,%d,%d", &t[0], &t[1], &t[2]), 3) << line;
    for (int v : t) {
      EXPECT_GE(v, 0);
      EXPECT_LT(v, 300);
    }
    std::sort(t.begin(), t.end());
    EXPECT_TRUE(triangles.insert(t).second);
  }
  EXPECT_EQ(static_cast<int>(triangles.size()), facts["triangles"].get<int>());
  // Euler: a triangulation of n points with h on the hull has 2n - 2 - h triangles.
  const int hull = static_cast<int>(facts["hull"].size());
  EXPECT_EQ(static_cast<int>(triangles.size()), 2 * 300 - 2 - hull);
}

// Signed area of a closed GeoJSON ring (positive counter-clockwise).
double RingArea(const nlohmann::json& ring) {
  double twice = 0;
  for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
    twice += ring[i][0].get<double>() * ring[i + 1][1].get<double>() - ring[i + 1][0].get<double>() * ring[i][1].get<double>();
  }
  return twice / 2;
}

TEST_F(Cli, ContourWritesGeoJsonLinesAndBands) {
  // z = x on a 9 x 5 lattice over [0, 4] x [0, 2]: the level 1.25 is the line x = 1.25
  // (between lattice columns, so no mesh edge lies on it).
  std::ostringstream text;
  for (int i = 0; i <= 8; ++i) {
    for (int j = 0; j <= 4; ++j) text << i * 0.5 << "," << j * 0.5 << "," << i * 0.5 << "\n";
  }
  const std::string file = Write("plane.xyz", text.str());
  const std::string out = (dir_ / "plane.geojson").string();
  ASSERT_EQ(Orvane("contour " + file + " --levels 1.25,3 --bands -o " + out).status, 0);
  std::ifstream in(out);
  const nlohmann::json doc = nlohmann::json::parse(in);
  EXPECT_EQ(doc["type"], "FeatureCollection");
  const auto& features = doc["features"];
  ASSERT_EQ(features.size(), 5u);  // two levels, three bands
  EXPECT_EQ(features[0]["properties"]["level"], 1.25);
  EXPECT_EQ(features[0]["geometry"]["type"], "MultiLineString");
  ASSERT_EQ(features[0]["geometry"]["coordinates"].size(), 1u);  // one polyline
  for (const auto& p : features[0]["geometry"]["coordinates"][0]) {
    EXPECT_NEAR(p[0].get<double>(), 1.25, 1e-9);
  }
  EXPECT_TRUE(features[2]["properties"]["lower"].is_null());
  EXPECT_EQ(features[3]["properties"]["lower"], 1.25);
  EXPECT_EQ(features[3]["properties"]["upper"], 3.0);
  EXPECT_TRUE(features[4]["properties"]["upper"].is_null());
  // The middle band is the strip 1.25 <= x <= 3: one polygon, one closed
  // counter-clockwise ring of area 3.5.
  const auto& strip = features[3]["geometry"]["coordinates"];
  ASSERT_EQ(strip.size(), 1u);
  ASSERT_EQ(strip[0].size(), 1u);
  const auto& ring = strip[0][0];
  EXPECT_EQ(ring.front(), ring.back());
  for (const auto& p : ring) {
    EXPECT_GE(p[0].get<double>(), 1.25 - 1e-9);
    EXPECT_LE(p[0].get<double>(), 3.0 + 1e-9);
  }
  EXPECT_NEAR(RingArea(ring), 3.5, 1e-12);
  // Automatic levels: ten intervals by default, or as asked; none at the Z limits 0 and 4.
  ASSERT_EQ(Orvane("contour " + file + " --count 4 -o " + out).status, 0);
  std::ifstream again(out);
  const nlohmann::json counted = nlohmann::json::parse(again);
  ASSERT_EQ(counted["features"].size(), 3u);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(counted["features"][k]["properties"]["level"], static_cast<double>(k) + 1);
  EXPECT_EQ(Orvane("contour " + file + " --count 3 --interval 2 -o " + out).status, 2);
  EXPECT_EQ(Orvane("contour " + file + " --interval -1 -o " + out).status, 2);
}

// How many band geometries of a GeoJSON file GDAL finds invalid, or -1 when it cannot
// read the file.
int InvalidBandsPerGdal(const std::filesystem::path& file) {
  const std::string command = "ogrinfo -q -dialect sqlite -sql \"SELECT count(*) AS bad FROM '" +
                              file.stem().string() +
                              "' WHERE level IS NULL AND NOT ST_IsEmpty(geometry) AND NOT "
                              "ST_IsValid(geometry)\" '" + file.string() + "' 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return -1;
  std::string out;
  std::array<char, 4096> buffer{};
  for (std::size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) out.append(buffer.data(), n);
  if (pclose(pipe) != 0) return -1;
  const std::size_t at = out.find("bad (Integer) = ");
  return at == std::string::npos ? -1 : std::stoi(out.substr(at + 16));
}

TEST_F(Cli, BandsAreMergedPolygonsWithHoles) {
  // A ring of high ground around a pit on a 41 x 41 lattice over [-1, 1]^2.
  std::ostringstream text;
  text.precision(17);
  for (int i = 0; i <= 40; ++i) {
    for (int j = 0; j <= 40; ++j) {
      const double x = -1 + i / 20.0, y = -1 + j / 20.0;
      const double r = std::hypot(x, y);
      text << x << ' ' << y << ' ' << std::exp(-std::pow((r - 0.5) / 0.15, 2)) << '\n';
    }
  }
  const std::string file = Write("crater.xyz", text.str());
  const std::filesystem::path out = dir_ / "crater.geojson";
  const Outcome run = Orvane("contour " + file + " --levels 0.5 --bands -o " + out.string());
  ASSERT_EQ(run.status, 0) << run.out;
  std::ifstream in(out);
  const nlohmann::json doc = nlohmann::json::parse(in);
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
  std::ostringstream text;
  std::mt19937 random(21);
  std::uniform_real_distribution<double> unit(0, 1);
  text.precision(17);
  for (int i = 0; i < 3000; ++i) {
    const double x = unit(random), y = unit(random);
    text << x << ' ' << y << ' ' << std::sin(9 * x) * std::cos(7 * y) + 0.2 * unit(random) << '\n';
  }
  const std::string file = Write("noisy.xyz", text.str());
  const std::filesystem::path out = dir_ / "noisy.geojson";
  const Outcome run = Orvane("contour " + file + " --count 12 --bands -o " + out.string());
  ASSERT_EQ(run.status, 0) << run.out;
  EXPECT_EQ(InvalidBandsPerGdal(out), 0);
}

TEST_F(Cli, LevelOptionsAreBoundedAndNamed) {
  const std::string file = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n");
  const std::string out = (dir_ / "c.geojson").string();
  const std::pair<std::string, std::string> cases[] = {
      {"--count 0", "orvane: --count must be between 1 and 10000\n"},
      {"--count 10001", "orvane: --count must be between 1 and 10000\n"},
      {"--count 2000000000", "orvane: --count must be between 1 and 10000\n"},
      {"--interval 0", "orvane: --interval must be a finite number above 0\n"},
      {"--interval nan", "orvane: --interval must be a finite number above 0\n"},
      {"--interval 1e-9", "orvane: --interval 1e-09 gives more than 10000 levels between the Z limits\n"},
      {"--levels 1,nan,2", "orvane: --levels: the level nan is not a finite number\n"},
      {"--levels inf", "orvane: --levels: the level inf is not a finite number\n"},
      {"--ties sometimes", "orvane: --ties must be above or exact\n"}};
  for (const auto& [arguments, message] : cases) {
    const Outcome run = Orvane("contour " + file + " " + arguments + " -o " + out);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out, message) << arguments;
  }
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_EQ(Orvane("contour " + file + " --count 10000 -o " + out).status, 0);
  EXPECT_NE(Orvane("contour --help").out.find("1 to 10000"), std::string::npos);
}

TEST_F(Cli, InfoPrintsTheValuesTheFileHeld) {
  // 3.5 comes back from normalised units over -7.3 .. 6.9 as 3.500000000000001.
  const std::string file = Write("h.xyz", "-7.3 0 1\n6.9 0 2\n3.5 5 3\n-7.3 5 4\n");
  const Outcome text = Orvane("info " + file);
  ASSERT_EQ(text.status, 0) << text.out;
  EXPECT_NE(text.out.find("\n  3.5 5\n"), std::string::npos) << text.out;
  const nlohmann::json facts = nlohmann::json::parse(Orvane("info --json " + file).out);
  const auto& hull = facts["hull"];
  EXPECT_NE(std::find(hull.begin(), hull.end(), nlohmann::json::parse("[3.5, 5]")), hull.end()) << hull;
}

// Files of a folder, by name.
std::set<std::string> Listing(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename().string());
  return names;
}

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Output through a temporary beside the target, renamed into place at the end.
class CliOutput : public Cli {
 protected:
  void SetUp() override {
    Cli::SetUp();
    std::ostringstream text;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int i = 0; i < 2000; ++i) text << unit(random) << ' ' << unit(random) << ' ' << unit(random) << '\n';
    input_ = Write("in.xyz", text.str());
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
  for (const auto& [command, target] : Writers((dir_ / "out").string())) {
    std::ofstream(target) << "old contents\n";
    const std::set<std::string> before = Listing(dir_);
    // At most 4 blocks of output: every command here writes more.
    const Outcome run = Shell("sh -c 'ulimit -f 4; exec " + std::string(ORVANE_CLI_PATH) + " " + command + "' 2>&1");
    EXPECT_EQ(run.status, 2) << command << run.out;
    EXPECT_NE(run.out.find(target + ": cannot write the file"), std::string::npos) << run.out;
    EXPECT_EQ(Slurp(target), "old contents\n") << command;
    EXPECT_EQ(Listing(dir_), before) << command;  // no temporary left behind
  }
}

TEST_F(CliOutput, TargetsThatCannotBeReplacedAreRefusedUpFront) {
  for (const auto& [command, locked] : Writers((dir_ / "locked").string())) {
    std::ofstream(locked) << "keep\n";
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read | std::filesystem::perms::group_read);
    const Outcome run = Orvane(command);
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.out, "orvane: " + locked + ": cannot replace the file: it is read-only\n") << command;
    EXPECT_EQ(Slurp(locked), "keep\n");
  }
  for (const auto& [command, folder] : Writers((dir_ / "folder").string())) {
    std::filesystem::create_directory(folder);
    std::ofstream(std::filesystem::path(folder) / "inside") << "x";
    const Outcome run = Orvane(command);
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.out, "orvane: " + folder + ": cannot replace the file (Is a directory)\n") << command;
    EXPECT_EQ(Listing(folder), std::set<std::string>{"inside"});
  }
  for (const auto& [command, nowhere] : Writers((dir_ / "missing" / "out").string())) {
    const Outcome run = Orvane(command);
    EXPECT_EQ(run.out, "orvane: " + nowhere + ": cannot create the file (No such file or directory)\n") << command;
  }
  EXPECT_FALSE(std::filesystem::exists(dir_ / "missing"));
}

TEST_F(CliOutput, AGoodRunReplacesTheTargetKeepingItsMode) {
  const std::string target = (dir_ / "tri.csv").string();
  std::ofstream(target) << "old\n";
  std::filesystem::permissions(target, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                                           std::filesystem::perms::others_read);
  ASSERT_EQ(Orvane("triangulate " + input_ + " -o " + target).status, 0);
  EXPECT_NE(Slurp(target).substr(0, 4), "old\n");
  EXPECT_EQ(std::filesystem::status(target).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write | std::filesystem::perms::others_read);
  EXPECT_EQ(Listing(dir_), (std::set<std::string>{"in.xyz", "tri.csv"}));
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

TEST_F(Cli, GridWritesCsvWithTheXIndexOuter) {
  const std::string file = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n0.5 0.5 9\n");
  const std::string out = (dir_ / "g.csv").string();
  const Outcome run = Orvane("grid " + file + " --method idw --intervals 2 -o " + out);
  ASSERT_EQ(run.status, 0) << run.out;
  const std::vector<std::string> lines = Lines(out);
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_EQ(lines[0], "0,0,1");      // exact hits keep the data
  EXPECT_EQ(lines[1].rfind("0,0.5,", 0), 0u);
  EXPECT_EQ(lines[4], "0.5,0.5,9");
  EXPECT_EQ(lines[8], "1,1,4");
  // Power 0 gives the plain mean away from the data.
  ASSERT_EQ(Orvane("grid " + file + " --method idw --power 0 --intervals 2 -o " + out).status, 0);
  EXPECT_EQ(Lines(out)[1], "0,0.5,3.8");
  // Explicit limits replace the data's; the others stay.
  ASSERT_EQ(Orvane("grid " + file + " --method idw --intervals 4 --xmin -1 -o " + out).status, 0);
  EXPECT_EQ(Lines(out)[0].rfind("-1,0,", 0), 0u);
  EXPECT_EQ(Lines(out)[24].rfind("1,1,", 0), 0u);
}

TEST_F(Cli, GridWritesDsaaForEveryMethod) {
  std::ostringstream text;
  std::mt19937 random(3);
  std::uniform_real_distribution<double> unit(0, 1);
  text.precision(17);
  text << "0 0 3\n2 0 7\n0 1 2\n2 1 6\n";  // the corners of [0, 2] x [0, 1]
  for (int i = 0; i < 40; ++i) {
    const double x = 2 * unit(random), y = unit(random);
    text << x << ' ' << y << ' ' << 3 + 2 * x - y << '\n';
  }
  const std::string file = Write("plane.xyz", text.str());
  const std::string out = (dir_ / "g.grd").string();
  for (const std::string method : {"nn", "nn --gradients --tautness 2", "kriging --no-block --model spherical --nugget 0",
                                   "kriging --range 3"}) {
    const Outcome run = Orvane("grid " + file + " --method " + method + " --intervals 4 -o " + out);
    ASSERT_EQ(run.status, 0) << method << run.out;
    const std::vector<std::string> lines = Lines(out);
    EXPECT_EQ(lines[0], "DSAA");
    EXPECT_EQ(lines[1], "5 5");
    EXPECT_EQ(lines[2], "0 2");
    EXPECT_EQ(lines[3], "0 1");
    const orvane::GridFile grid = orvane::ReadDataFile(out).grid;
    ASSERT_EQ(grid.z.size(), 25u);
    // Node (0, 0) and the middle of the first row (X = 1, Y = 0).
    EXPECT_NEAR(grid.z[0], 3.0, method.find("kriging --range") == 0 ? 1.0 : 1e-9) << method;
    if (method.rfind("nn", 0) == 0) {
      EXPECT_NEAR(grid.z[2 * 5], 5.0, 1e-12);  // linear data reproduced
      EXPECT_EQ(lines[4], "2 7");
    }
  }
}

TEST_F(Cli, GridRefusesBadRequestsClearly) {
  const std::string file = Write("p.xyz", "0 0 1\n1 1 2\n2 2 3\n");
  const std::string out = (dir_ / "g.csv").string();
  const std::pair<std::string, std::string> cases[] = {
      {"--method nn -o " + out, "Natural-neighbour interpolation needs points that do not all lie on one line."},
      {"--method idw --power -1 -o " + out, "Weighting power must be greater than or equal to 0"},
      {"--method idw --xmin 5 -o " + out, "The grid's X minimum must lie below its maximum."},
      {"--method nn --power 2 -o " + out, "--power applies to --method idw only."},
      {"--method idw -o " + (dir_ / "g.txt").string(), "g.txt: cannot write .txt files; the grid formats are .tif, .nc, .asc, .grd, .csv\n"},
      {"--method spline -o " + out, "spline"},
      {"--method idw --intervals 0 -o " + out, "orvane: --intervals must be between 1 and 10000\n"},
      {"--method idw --intervals 10001 -o " + out, "orvane: --intervals must be between 1 and 10000\n"},
      {"--method idw --xmax nan -o " + out, "orvane: --xmax must be a finite number\n"}};
  for (const auto& [arguments, message] : cases) {
    const Outcome run = Orvane("grid " + file + " " + arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_NE(run.out.find(message), std::string::npos) << arguments << "\n" << run.out;
  }
  // Points along one line give no grid unless the limits are given.
  const std::string line = Write("line.xyz", "1 0 1\n1 1 2\n1 2 3\n");
  const Outcome flat = Orvane("grid " + line + " --method idw -o " + out);
  EXPECT_EQ(flat.status, 2);
  EXPECT_EQ(flat.out, "orvane: " + line + ": the points have no extent along X; give --xmin and --xmax for the grid.\n");
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_EQ(Orvane("grid " + line + " --method idw --xmin 0 --xmax 2 --intervals 2 -o " + out).status, 0);
  EXPECT_NE(Orvane("grid --help").out.find("1 to 10000"), std::string::npos);
}

TEST_F(Cli, GridStopsCleanlyWhenInterrupted) {
  std::ostringstream text;
  std::mt19937 random(4);
  std::uniform_real_distribution<double> unit(0, 1);
  for (int i = 0; i < 20000; ++i) text << unit(random) << ' ' << unit(random) << ' ' << unit(random) << '\n';
  const std::string file = Write("big.xyz", text.str());
  const std::string out = (dir_ / "big.csv").string();
  // Minutes of work, interrupted after a moment.
  const std::string script = "sh -c '" + std::string(ORVANE_CLI_PATH) + " grid " + file +
                             " --method idw --intervals 3000 -o " + out +
                             " & pid=$!; sleep 1; kill -INT $pid; wait $pid; echo status=$?' 2>&1";
  std::string output;
  FILE* pipe = popen(script.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::array<char, 4096> buffer{};
  for (std::size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), n);
  pclose(pipe);
  EXPECT_NE(output.find("status=130"), std::string::npos) << output;
  EXPECT_NE(output.find("The resampling was interrupted."), std::string::npos) << output;
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_FALSE(std::filesystem::exists(out + ".partial"));
}

}  // namespace

namespace {

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

TEST_F(Cli, RenderDrawsTheSampleAndDataFilesToPng) {
  const std::string out = (dir_ / "s.png").string();
  const Outcome run = Orvane("render --sample --size 320x240 -o " + out);
  ASSERT_EQ(run.status, 0) << run.out;
  const Png png = ReadPng(out);
  ASSERT_EQ(png.width, 320);
  ASSERT_EQ(png.height, 240);
  EXPECT_EQ(png.At(0, 0), 0xFFFFFFu);  // white background in the corners
  EXPECT_EQ(png.At(319, 239), 0xFFFFFFu);
  int coloured = 0;
  for (int y = 0; y < png.height; ++y) {
    for (int x = 0; x < png.width; ++x) {
      const std::uint32_t c = png.At(x, y);
      const int r = static_cast<int>(c & 0xFF), g = static_cast<int>(c >> 8 & 0xFF), b = static_cast<int>(c >> 16 & 0xFF);
      coloured += std::max({r, g, b}) - std::min({r, g, b}) > 60;  // clearly not grey
    }
  }
  EXPECT_GT(coloured, 2000);
  // The caption band at the top: dark text in its middle third, nothing at its ends.
  auto darkIn = [&](int x0, int x1, int y0, int y1) {
    int n = 0;
    for (int y = y0; y < y1; ++y) {
      for (int x = x0; x < x1; ++x) n += (png.At(x, y) & 0xFF) < 96 && (png.At(x, y) >> 8 & 0xFF) < 96;
    }
    return n;
  };
  EXPECT_GT(darkIn(106, 214, 0, 24), 30);
  EXPECT_EQ(darkIn(0, 60, 0, 24), 0);
  EXPECT_EQ(darkIn(260, 320, 0, 24), 0);

  // Scattered points, a grid file, and a resampled surface, in 2-D and 3-D.
  std::ostringstream xyz, grd;
  std::mt19937 random(9);
  std::uniform_real_distribution<double> unit(0, 1);
  for (int i = 0; i < 200; ++i) {
    const double x = unit(random), y = unit(random);
    xyz << x << ' ' << y << ' ' << std::sin(5 * x) * y << '\n';
  }
  grd << "DSAA\n3 3\n0 1\n0 1\n0 4\n0 1 2\n1 2 3\n2 3 4\n";
  const std::string points = Write("p.xyz", xyz.str()), grid = Write("g.grd", grd.str());
  for (const std::string& arguments :
       {points + " --plot-type 2d", grid + " --lighting --mesh --colormap land-sea-dark", points + " --resample idw --intervals 20",
        points + " --markers --no-fill --rotation 90,0,0 --zoom 1.5 --contours 5 --interpolate-colors --title T"}) {
    const Outcome r = Orvane("render " + arguments + " --size 160x120 -o " + out);
    EXPECT_EQ(r.status, 0) << arguments << "\n" << r.out;
    EXPECT_EQ(ReadPng(out).width, 160) << arguments;
  }
}

TEST_F(Cli, RenderRefusesBadRequests) {
  const std::string points = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n");
  const std::string out = (dir_ / "r.png").string();
  const std::pair<std::string, std::string> cases[] = {
      {"-o " + out, "orvane: give a data FILE, --sample or --state\n"},
      {points + " --sample -o " + out, "orvane: give either a data FILE or --sample\n"},
      {points + " --size 0x10 -o " + out, "orvane: --size must be WIDTHxHEIGHT with each side from 1 to 16384, as in 800x600\n"},
      {points + " --size 800 -o " + out, "orvane: --size must be WIDTHxHEIGHT with each side from 1 to 16384, as in 800x600\n"},
      {points + " --plot-type 4d -o " + out, "orvane: --plot-type must be 3d or 2d\n"},
      {points + " --rotation 1,2 -o " + out, "orvane: --rotation takes three angles: X,Y,Z\n"},
      {points + " --zoom 0 -o " + out, "orvane: --zoom must be a finite number above 0\n"},
      {points + " --contours 0 -o " + out, "orvane: --contours must be between 1 and 10000\n"},
      {points + " --fill lumpy -o " + out, "orvane: --fill must be flat, bands or smooth\n"},
      {points + " --fill flat --interpolate-colors -o " + out,
       "orvane: --interpolate-colors asks for --fill smooth, not --fill flat\n"},
      {points + " --ties maybe -o " + out, "orvane: --ties must be above or exact\n"},
      {points + " --power 2 -o " + out, "orvane: --power applies with --resample only\n"},
      {"--sample --resample idw -o " + out, "orvane: --resample applies to a data FILE only\n"},
      {(dir_ / "none.xyz").string() + " -o " + out,
       "orvane: " + (dir_ / "none.xyz").string() + ": cannot open the file (No such file or directory)\n"}};
  for (const auto& [arguments, message] : cases) {
    const Outcome run = Orvane("render " + arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out, message) << arguments;
  }
  const Outcome map = Orvane("render " + points + " --colormap plaid -o " + out);
  EXPECT_EQ(map.status, 2);
  EXPECT_NE(map.out.find("--colormap must be one of blue-red"), std::string::npos) << map.out;
  EXPECT_FALSE(std::filesystem::exists(out));
}

// The property bag of a saved State file.
orvane::PropertyBag ReadStateBag(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  orvane::PropertyBag bag;
  bag.SetContents(std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()));
  return bag;
}

TEST_F(Cli, FillAndTiesDefaultToExactBandsAndWholeContoursAndKeepWhatAStateHolds) {
  // What the command stores for each choice: exact bands and ties above unless told.
  const std::string state = (dir_ / "f.state").string();
  auto stored = [&](const std::string& options) {
    const Outcome run = Orvane("state --sample " + options + " -o " + state);
    EXPECT_EQ(run.status, 0) << options << "\n" << run.out;
    const orvane::PropertyBag bag = ReadStateBag(state);
    return std::array{bag.ReadProperty("Contouring.ExactBands", false), bag.ReadProperty("Contouring.InterpolateColors", false),
                      bag.ReadProperty("Contouring.TiesAbove", false)};
  };
  EXPECT_EQ(stored(""), (std::array{true, false, true}));
  EXPECT_EQ(stored("--fill flat --ties exact"), (std::array{false, false, false}));
  EXPECT_EQ(stored("--fill smooth"), (std::array{false, true, true}));
  EXPECT_EQ(stored("--interpolate-colors"), (std::array{false, true, true}));
  // A state's own choice stands unless the options name another.
  ASSERT_EQ(Orvane("state --sample --fill flat --ties exact --formatting-only -o " + state).status, 0);
  const std::string again = (dir_ / "g.state").string();
  ASSERT_EQ(Orvane("state --sample --state " + state + " -o " + again).status, 0);
  const orvane::PropertyBag bag = ReadStateBag(again);
  EXPECT_FALSE(bag.ReadProperty("Contouring.ExactBands", true));
  EXPECT_FALSE(bag.ReadProperty("Contouring.TiesAbove", true));
}

TEST_F(Cli, ProjectionsAreOffUnlessAskedForAndAxisTitlesComeFromTheOptions) {
  const std::string state = (dir_ / "p.state").string();
  auto bag = [&](const std::string& options) {
    const Outcome run = Orvane("state --sample " + options + " -o " + state);
    EXPECT_EQ(run.status, 0) << options << "\n" << run.out;
    return ReadStateBag(state);
  };
  auto shown = [](const orvane::PropertyBag& b) {
    return std::array{b.ReadProperty("Datasets.DataSet1.ViewTop.Visible", true),
                      b.ReadProperty("Datasets.DataSet1.ViewBottom.Visible", true)};
  };
  EXPECT_EQ(shown(bag("")), (std::array{false, false}));
  EXPECT_EQ(shown(bag("--projections top")), (std::array{true, false}));
  EXPECT_EQ(shown(bag("--projections bottom")), (std::array{false, true}));
  EXPECT_EQ(shown(bag("--projections both")), (std::array{true, true}));
  const orvane::PropertyBag titled = bag("--xlabel Easting --ylabel Northing --zlabel 'Height (m)'");
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
  // By pixels: the default draws what none draws; both put maps on the cube's faces.
  const std::string a = (dir_ / "a.png").string(), b = (dir_ / "b.png").string(), both = (dir_ / "c.png").string();
  for (const auto& [options, out] : {std::pair{std::string(), a}, std::pair{std::string("--projections none"), b},
                                     std::pair{std::string("--projections both"), both}}) {
    ASSERT_EQ(Orvane("render --sample --size 240x180 " + options + " -o " + out).status, 0) << options;
  }
  EXPECT_EQ(ReadPng(a).rgb, ReadPng(b).rgb);
  const Png plain = ReadPng(a), projected = ReadPng(both);
  std::size_t differing = 0;
  for (std::size_t i = 0; i < plain.rgb.size(); i += 3) differing += plain.rgb[i] != projected.rgb[i] || plain.rgb[i + 1] != projected.rgb[i + 1];
  EXPECT_GT(differing, 1000u);
  const Outcome bad = Orvane("render --sample --projections sideways -o " + (dir_ / "x.png").string());
  EXPECT_EQ(bad.status, 2);
  EXPECT_EQ(bad.out, "orvane: --projections must be none, top, bottom or both\n");
}

TEST_F(Cli, RenderLevelsColourMapsAspectAndSamples) {
  // Z from 1 to 1000 over a square; the levels and colours the command stores.
  const std::string points = Write("z.xyz", "0 0 1\n1 0 10\n0 1 100\n1 1 1000\n0.5 0.5 50\n");
  const std::string state = (dir_ / "l.state").string();
  auto bag = [&](const std::string& file, const std::string& options) {
    const Outcome run = Orvane("state " + file + " " + options + " -o " + state);
    EXPECT_EQ(run.status, 0) << options << "\n" << run.out;
    return ReadStateBag(state);
  };
  auto levels = [](const orvane::PropertyBag& b) {
    std::vector<std::pair<double, std::int32_t>> v;
    for (std::int32_t i = 0; i < b.ReadProperty("Contouring.Contours.Count", std::int32_t{0}); ++i) {
      const std::string key = "Contouring.Contours.Contour" + std::to_string(i) + ".";
      v.emplace_back(b.ReadProperty(key + "Value", 0.0), b.ReadProperty(key + "Color", std::int32_t{0}));
    }
    return v;
  };
  // Evenly in log10 Z, two significant digits, coloured by order from viridis's ends
  // (#440154, #21908C, #FDE725) rather than by value, which would crowd them at its foot.
  const orvane::PropertyBag logged = bag(points, "--levels-log 3");
  EXPECT_EQ(levels(logged), (std::vector<std::pair<double, std::int32_t>>{{5.6, 0x540144}, {32, 0x8C9021}, {180, 0x25E7FD}}));
  // Spacing and offset as orvane contour puts them, a list as given.
  auto values = [&](const std::string& options) {
    std::vector<double> v;
    for (const auto& [value, colour] : levels(bag(points, options))) v.push_back(value);
    return v;
  };
  EXPECT_EQ(values("--interval 300 --offset 50"), (std::vector<double>{50, 350, 650, 950}));
  EXPECT_EQ(values("--levels 700,2,40"), (std::vector<double>{2, 40, 700}));
  // A table of data values colours each level at its value: 0 blue to 1000 red.
  const std::string table = Write("t.txt", "# value colour\n0 #0000FF\n1000 #FF0000\n");
  const auto tabled = levels(bag(points, "--levels 250,500,750 --colormap " + table));
  EXPECT_EQ(tabled, (std::vector<std::pair<double, std::int32_t>>{{250, 0xBF0040}, {500, 0x800080}, {750, 0x4000BF}}));
  EXPECT_EQ(ReadStateBag(state).ReadProperty("Contouring.ColorMap", std::int32_t{-1}), orvane::orvColorMapUser);

  // Equal aspect and 4 samples unless told; a long, thin domain is stretched.
  EXPECT_TRUE(logged.ReadProperty("Axes.KeepXYAspectRatio", false));
  EXPECT_EQ(logged.ReadProperty("Samples", 0), 4);
  EXPECT_TRUE(logged.ReadProperty("FitPlotArea", false));
  const std::string thin = Write("thin.xyz", "0 0 1\n100 0 2\n0 1 3\n100 1 4\n");
  EXPECT_FALSE(bag(thin, "").ReadProperty("Axes.KeepXYAspectRatio", true));
  EXPECT_TRUE(bag(thin, "--aspect equal --samples 1").ReadProperty("Axes.KeepXYAspectRatio", false));
  EXPECT_EQ(ReadStateBag(state).ReadProperty("Samples", 0), 1);

  const std::string out = (dir_ / "r.png").string();
  const std::pair<std::string, std::string> refused[] = {
      {thin + " --levels-log 4 --contours 3", "orvane: --contours excludes --levels-log\norvane: run 'orvane --help' or 'orvane COMMAND --help' for the options\n"},
      {Write("neg.xyz", "0 0 -1\n1 0 2\n0 1 3\n") + " --levels-log 4", "orvane: --levels-log needs Z above 0: the data's minimum is -1\n"},
      {thin + " --samples 0", "orvane: --samples must be between 1 and 16\n"},
      {thin + " --aspect square", "orvane: --aspect must be equal or auto\n"}};
  for (const auto& [arguments, message] : refused) {
    const Outcome run = Orvane("render " + arguments + " -o " + out);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out, message) << arguments;
  }
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(Cli, LightingKeepsTheColourMapsHuesAndShadesTheSlopes) {
  // A cone on flat ground, drawn unlit and lit from the same place: every coloured pixel
  // keeps its hue (the RGB direction), and the slopes turned away darken.
  std::ostringstream text;
  for (int i = 0; i <= 40; ++i) {
    for (int j = 0; j <= 40; ++j) {
      const double r = std::hypot(i - 20.0, j - 20.0);
      text << i << ' ' << j << ' ' << std::max(0.0, 12.0 - r) << '\n';
    }
  }
  const std::string cone = Write("cone.xyz", text.str());
  const std::string unlit = (dir_ / "u.png").string(), lit = (dir_ / "l.png").string();
  for (const std::string fill : {"bands", "flat"}) {
  const std::string options = " --size 320x240 --no-lines --fill " + fill;
  ASSERT_EQ(Orvane("render " + cone + options + " -o " + unlit).status, 0);
  ASSERT_EQ(Orvane("render " + cone + options + " --lighting -o " + lit).status, 0);
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
  const std::string state = (dir_ / "s.state").string(), a = (dir_ / "a.png").string(), b = (dir_ / "b.png").string();
  ASSERT_EQ(Orvane("state --sample --plot-type 2d --title Saved -o " + state).status, 0);
  // The state keeps the zoom it was saved with (1); a render fits the plot unless told.
  ASSERT_EQ(Orvane("render --sample --plot-type 2d --title Saved --zoom 1 --size 200x150 -o " + a).status, 0);
  // The state alone (it holds the data) draws the same picture.
  const Outcome run = Orvane("render --state " + state + " --size 200x150 -o " + b);
  ASSERT_EQ(run.status, 0) << run.out;
  const Png pa = ReadPng(a), pb = ReadPng(b);
  ASSERT_EQ(pb.width, 200);
  EXPECT_EQ(pa.rgb, pb.rgb);
  // Options given with it win; the formatting-only state keeps a FILE's data.
  const std::string formatting = (dir_ / "f.state").string();
  ASSERT_EQ(Orvane("state --sample --no-legend --formatting-only -o " + formatting).status, 0);
  EXPECT_EQ(Orvane("render --sample --state " + formatting + " --plot-type 3d --size 120x90 -o " + b).status, 0);

  const std::string junk = Write("junk.state", "not a state at all");
  const Outcome bad = Orvane("render --state " + junk + " -o " + b);
  EXPECT_EQ(bad.status, 2);
  EXPECT_EQ(bad.out.rfind("orvane: " + junk + ": not a saved state (", 0), 0u) << bad.out;
  const Outcome missing = Orvane("render --state " + (dir_ / "none.state").string() + " -o " + b);
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.out, "orvane: " + (dir_ / "none.state").string() + ": cannot open the state file\n");
}

}  // namespace

namespace {

// The convex hull of points, counter-clockwise.
std::vector<std::array<double, 2>> Hull(std::vector<std::array<double, 2>> p) {
  std::sort(p.begin(), p.end());
  const auto turn = [](const std::array<double, 2>& o, const std::array<double, 2>& a, const std::array<double, 2>& b) {
    return (a[0] - o[0]) * (b[1] - o[1]) - (a[1] - o[1]) * (b[0] - o[0]);
  };
  std::vector<std::array<double, 2>> h;
  for (int pass = 0; pass < 2; ++pass) {
    const std::size_t start = h.size();
    for (const auto& q : p) {
      while (h.size() >= start + 2 && turn(h[h.size() - 2], h.back(), q) <= 0) h.pop_back();
      h.push_back(q);
    }
    h.pop_back();
    std::reverse(p.begin(), p.end());
  }
  return h;
}

// How far (x, y) lies inside the convex hull: the least distance to an edge's line,
// negative outside.
double Inside(const std::vector<std::array<double, 2>>& hull, double x, double y) {
  double least = 1e300;
  for (std::size_t e = 0; e < hull.size(); ++e) {
    const auto& a = hull[e];
    const auto& b = hull[(e + 1) % hull.size()];
    const double ex = b[0] - a[0], ey = b[1] - a[1];
    least = std::min(least, (ex * (y - a[1]) - ey * (x - a[0])) / std::hypot(ex, ey));
  }
  return least;
}

// A DSAA file as written: counts, ranges and values (row by row from the lowest Y).
struct Dsaa {
  std::string tag;
  std::size_t nx = 0, ny = 0;
  double x0 = 0, x1 = 0, y0 = 0, y1 = 0, z0 = 0, z1 = 0;
  std::vector<double> z;  // z[j * nx + i]
};

Dsaa ReadDsaa(const std::string& path) {
  std::ifstream in(path);
  Dsaa d;
  in >> d.tag >> d.nx >> d.ny >> d.x0 >> d.x1 >> d.y0 >> d.y1 >> d.z0 >> d.z1;
  for (double v; in >> v;) d.z.push_back(v);
  return d;
}

constexpr double kBlank = 1.70141e38;

TEST_F(Cli, ApiGivesTheLinesAndBandsTheExportWrites) {
  std::ostringstream text;
  std::mt19937 random(8);
  std::uniform_real_distribution<double> unit(0, 1);
  text.precision(17);
  for (int i = 0; i < 500; ++i) {
    const double x = 3 * unit(random), y = 2 * unit(random);
    text << x << ' ' << y << ' ' << std::sin(2 * x) * std::cos(3 * y) << '\n';
  }
  const std::string file = Write("wave.xyz", text.str());
  const std::string out = (dir_ / "wave.geojson").string();
  ASSERT_EQ(Orvane("contour " + file + " --levels -0.5,0,0.25,0.5 --bands -o " + out).status, 0);
  std::ifstream in(out);
  const nlohmann::json features = nlohmann::json::parse(in)["features"];

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

TEST_F(Cli, GridBlanksCellsOutsideTheHullOfClusteredData) {
  // Clusters along a winding river, as field samples lie: the bounding box's corners are
  // far from any point.
  std::ostringstream text;
  std::mt19937 random(11);
  std::normal_distribution<double> spread(0, 60);
  text.precision(17);
  std::vector<std::array<double, 2>> places;
  for (int c = 0; c < 12; ++c) {
    const double cx = 179000 + 300 * c, cy = 330000 + 200 * c + 250 * std::sin(c * 0.9);
    for (int i = 0; i < 15; ++i) {
      const double x = cx + spread(random), y = cy + spread(random);
      places.push_back({x, y});
      text << x << ' ' << y << ' ' << 100 + 0.01 * (x - 179000) + 40 * std::sin(0.003 * y) << '\n';
    }
  }
  const std::string file = Write("river.xyz", text.str());
  const auto hull = Hull(places);
  const std::string grd = (dir_ / "g.grd").string();

  // Which nodes each run leaves blank; false when a run fails or its header is wrong.
  const auto blanks = [&](const std::string& options, std::vector<bool>& blank) {
    const Outcome run = Orvane("grid " + file + " " + options + " --intervals 30 -o " + grd);
    EXPECT_EQ(run.status, 0) << options << run.out;
    const Dsaa d = ReadDsaa(grd);
    EXPECT_EQ(d.tag, "DSAA");
    EXPECT_EQ(d.nx, 31u);
    EXPECT_EQ(d.ny, 31u);
    if (d.z.size() != 31u * 31u) return false;
    double lo = 1e300, hi = -1e300;
    blank.assign(d.z.size(), false);
    for (std::size_t k = 0; k < d.z.size(); ++k) {
      blank[k] = d.z[k] == kBlank;
      if (blank[k]) continue;
      lo = std::min(lo, d.z[k]);
      hi = std::max(hi, d.z[k]);
    }
    // The Z range is that of the values, blanks left out (rounded to 15 digits).
    EXPECT_NEAR(d.z0, lo, 1e-14 * std::fabs(lo)) << options;
    EXPECT_NEAR(d.z1, hi, 1e-14 * std::fabs(hi)) << options;
    for (std::size_t j = 0; j < d.ny; ++j) {
      for (std::size_t i = 0; i < d.nx; ++i) {
        const double x = d.x0 + (d.x1 - d.x0) * static_cast<double>(i) / 30;
        const double y = d.y0 + (d.y1 - d.y0) * static_cast<double>(j) / 30;
        const double inside = Inside(hull, x, y);
        if (inside < -1e-6) {
          EXPECT_TRUE(blank[j * d.nx + i]) << options << " node " << i << "," << j;
        } else if (inside > 1e-6) {
          EXPECT_FALSE(blank[j * d.nx + i]) << options << " node " << i << "," << j;
        }
      }
    }
    return true;
  };
  std::vector<bool> nn, idw, kriging, plain;
  ASSERT_TRUE(blanks("--method nn", nn));
  const auto count = [](const std::vector<bool>& b) { return std::count(b.begin(), b.end(), true); };
  EXPECT_GT(count(nn), 200);  // most of the box lies outside the river's hull
  ASSERT_TRUE(blanks("--method idw --blank-outside-hull", idw));
  ASSERT_TRUE(blanks("--method kriging --blank-outside-hull", kriging));
  EXPECT_EQ(idw, nn);
  EXPECT_EQ(kriging, nn);
  ASSERT_TRUE(blanks("--method nn --gradients", nn));
  EXPECT_EQ(nn, idw);
  // Extrapolation, and idw and kriging by default, fill every cell. (The hull test above
  // then fails for the outside nodes, so only the counts are looked at.)
  for (const std::string options : {"--method nn --extrapolate", "--method idw"}) {
    ASSERT_EQ(Orvane("grid " + file + " " + options + " --intervals 30 -o " + grd).status, 0);
    const Dsaa d = ReadDsaa(grd);
    EXPECT_EQ(std::count(d.z.begin(), d.z.end(), kBlank), 0) << options;
  }
  EXPECT_EQ(Orvane("grid " + file + " --method nn --extrapolate --blank-outside-hull -o " + grd).status, 2);
  // CSV: a blank cell has an empty Z.
  const std::string csv = (dir_ / "g.csv").string();
  ASSERT_EQ(Orvane("grid " + file + " --method nn --intervals 30 -o " + csv).status, 0);
  std::size_t empty = 0;
  for (const std::string& line : Lines(csv)) empty += line.back() == ',' ? 1u : 0u;
  EXPECT_EQ(static_cast<std::ptrdiff_t>(empty), count(idw));
  // GDAL takes the blank value for no data.
  ASSERT_EQ(Orvane("grid " + file + " --method nn --intervals 30 -o " + grd).status, 0);
  const Outcome gdal = Shell("gdalinfo " + grd + " 2>&1");
  if (gdal.status == 0) {
    EXPECT_NE(gdal.out.find("NoData Value=1.7014"), std::string::npos) << gdal.out;
  }
}

TEST_F(Cli, IntervalLevelsAreMultiplesOfTheIntervalPlusTheOffset) {
  // z = 100 + 20 x over [0, 1] x [0, 1].
  std::ostringstream text;
  for (int i = 0; i <= 10; ++i) {
    for (int j = 0; j <= 4; ++j) text << i / 10.0 << ' ' << j / 4.0 << ' ' << 100 + 2 * i << '\n';
  }
  const std::string file = Write("ramp.xyz", text.str());
  const std::string out = (dir_ / "c.geojson").string();
  const auto levels = [&](const std::string& options) {
    std::vector<double> found;
    const Outcome run = Orvane("contour " + file + " " + options + " -o " + out);
    EXPECT_EQ(run.status, 0) << options << run.out;
    std::ifstream in(out);
    const nlohmann::json doc = nlohmann::json::parse(in);
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
  std::ifstream in(out);
  const std::string geojson{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  EXPECT_NE(geojson.find("{\"level\":100.6}"), std::string::npos);
  EXPECT_NE(geojson.find("{\"level\":114.2}"), std::string::npos);
  for (std::size_t at = geojson.find("\"level\":"); at != std::string::npos; at = geojson.find("\"level\":", at + 1)) {
    const std::string value = geojson.substr(at + 8, geojson.find('}', at) - at - 8);
    EXPECT_LE(value.size(), 5u) << value;  // 100.2 to 119.8
  }
  // Bands the data do not reach are not written: one band below 130, none above it.
  ASSERT_EQ(Orvane("contour " + file + " --levels 130 --bands -o " + out).status, 0);
  std::ifstream banded(out);
  EXPECT_EQ(nlohmann::json::parse(banded)["features"].size(), 2u);
  const Outcome lonely = Orvane("contour " + file + " --offset 1 -o " + out);
  EXPECT_EQ(lonely.status, 2);
  EXPECT_EQ(lonely.out.rfind("orvane: ", 0), 0u) << lonely.out;
}

TEST_F(Cli, InputColumnsInvalidRowsAndDuplicates) {
  // Chosen columns of a wider, semicolon-separated file.
  const std::string wide = Write("wide.csv", "id;name;x;y;z\n1;a;0;0;1\n2;b;2;0;2\n3;c;2;3;3\n4;d;0;3;4\n");
  const Outcome picked = Orvane("info --json --columns 3,4,5 " + wide);
  ASSERT_EQ(picked.status, 0) << picked.out;
  const nlohmann::json facts = nlohmann::json::parse(picked.out);
  EXPECT_EQ(facts["points"], 4);
  EXPECT_EQ(facts["xmax"], 2.0);
  EXPECT_EQ(facts["zmax"], 4.0);
  EXPECT_EQ(Orvane("info " + wide).status, 2);  // five fields where three are expected
  EXPECT_EQ(Orvane("info --columns 3,4 " + wide).status, 2);
  const Outcome zero = Orvane("info --columns 0,4,5 " + wide);
  EXPECT_EQ(zero.status, 2);
  EXPECT_EQ(zero.out, "orvane: --columns are numbered from 1\n");

  // Rows with NaN or missing values: the first one is an error, unless skipped.
  const std::string gaps = Write("gaps.xyz", "0 0 1\n1 0 nan\n2 0 2\n1 1\n2 3 3\n0 3 4\n");
  const Outcome strict = Orvane("info " + gaps);
  EXPECT_EQ(strict.status, 2);
  EXPECT_EQ(strict.out, "orvane: " + gaps + ":2: values must be finite numbers; leave out such rows with --skip-invalid\n");
  const Outcome lenient = Orvane("info --skip-invalid " + gaps);
  ASSERT_EQ(lenient.status, 0) << lenient.out;
  EXPECT_NE(lenient.out.find("orvane: " + gaps + ": skipped 2 rows with missing or invalid values\n"), std::string::npos)
      << lenient.out;
  EXPECT_NE(lenient.out.find("points     4\n"), std::string::npos) << lenient.out;

  // Exact duplicates merge into their mean, with a note.
  const std::string twice = Write("twice.xyz", "0 0 1\n2 0 2\n2 2 3\n0 2 4\n0 0 3\n");
  const Outcome merged = Orvane("info " + twice);
  ASSERT_EQ(merged.status, 0) << merged.out;
  EXPECT_NE(merged.out.find("orvane: " + twice + ": merged 1 duplicate point (same X and Y) into the mean Z of each place\n"),
            std::string::npos)
      << merged.out;
  EXPECT_NE(merged.out.find("points     4\n"), std::string::npos);
  const std::string csv = (dir_ / "g.csv").string();
  ASSERT_EQ(Orvane("grid " + twice + " --method idw --intervals 1 -o " + csv).status, 0);
  EXPECT_EQ(Lines(csv).at(0), "0,0,2");
  const std::string tri = (dir_ / "t.csv").string();
  ASSERT_EQ(Orvane("triangulate " + twice + " -o " + tri).status, 0);
  for (const std::string& line : Lines(tri)) EXPECT_EQ(line.find('4'), std::string::npos) << line;  // points 0 to 3
}

TEST_F(Cli, KrigingRefusesANegativeNuggetOrASillBelowIt) {
  const std::string file = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n1 1 4\n0.5 0.5 9\n");
  const std::string out = (dir_ / "g.grd").string();
  const std::pair<std::string, std::string> cases[] = {
      {"--nugget -1", "orvane: --nugget must be a finite number of 0 or more, not -1.\n"},
      {"--sill 0.5", "orvane: --sill 0.5 does not go with the default nugget 1 (no variogram could be fitted: A "
                     "variogram fit needs at least two distance classes.); give --nugget and --sill\n"},
      {"--nugget 3 --sill 2", "orvane: --sill (2) must be a finite number not below --nugget (3): the sill is the "
                              "total variance, the nugget included.\n"},
      {"--nugget 0 --sill -2", "orvane: --sill (-2) must be a finite number not below --nugget (0): the sill is the "
                               "total variance, the nugget included.\n"}};
  for (const auto& [options, message] : cases) {
    const Outcome run = Orvane("grid " + file + " --method kriging " + options + " -o " + out);
    EXPECT_EQ(run.status, 2) << options;
    EXPECT_EQ(run.out, message) << options;
  }
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_EQ(Orvane("grid " + file + " --method kriging --nugget 0.5 --sill 3 -o " + out).status, 0);
}

TEST_F(Cli, BareCommandAndMistypedNames) {
  const Outcome bare = Orvane("");
  EXPECT_EQ(bare.status, 2);
  EXPECT_NE(bare.out.find("Subcommands:"), std::string::npos) << bare.out;
  EXPECT_NE(bare.out.find("contour"), std::string::npos);
  const std::string file = Write("p.xyz", "0 0 1\n1 0 2\n0 1 3\n");
  const std::string out = (dir_ / "g.csv").string();
  const std::pair<std::string, std::string> cases[] = {
      {"grid " + file + " --method idw --interval 4 -o " + out,
       "orvane: grid: unknown option --interval; did you mean --intervals?\n"},
      {"contour " + file + " --intervals 4 -o " + out, "orvane: contour: unknown option --intervals; did you mean --interval?\n"},
      {"rendr --sample -o x.png", "orvane: unknown command 'rendr'; did you mean render?\n"},
      {"grid " + file + " --method idw --colour red -o " + out, "orvane: grid: unknown option --colour\n"},
      {"grid " + file + " --method idw", "orvane: --output is required\n"}};
  for (const auto& [arguments, first] : cases) {
    const Outcome run = Orvane(arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out.substr(0, run.out.find('\n') + 1), first) << arguments << "\n" << run.out;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) EXPECT_EQ(line.rfind("orvane: ", 0), 0u) << line;
  }
  EXPECT_FALSE(std::filesystem::exists(out));
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

TEST_F(Cli, GridFilesGoThroughEveryCommandWithTheirBlanksAndCrs) {
  const std::string points = Write("tri.xyz", TrianglePoints());
  const std::string grd = (dir_ / "t.grd").string();
  const Outcome made = Orvane("grid " + points + " --method nn --intervals 10 --crs EPSG:28992 -o " + grd);
  ASSERT_EQ(made.status, 0) << made.out;
  // 11 x 11 nodes, those above the diagonal blank: 55 of them.
  const Outcome info = Orvane("info " + grd);
  ASSERT_EQ(info.status, 0) << info.out;
  EXPECT_NE(info.out.find("grid       11 x 11 nodes\n"), std::string::npos) << info.out;
  EXPECT_NE(info.out.find("x          0 .. 10\n"), std::string::npos) << info.out;
  EXPECT_NE(info.out.find("blank      55 cells\ncrs        EPSG:28992\n"), std::string::npos) << info.out;
  const nlohmann::json json = nlohmann::json::parse(Orvane("info --json " + grd).out);
  EXPECT_EQ(json["blanks"], 55);
  EXPECT_EQ(json["columns"], 11);
  // The grid's own CSV and DSAA output read back as they are; the CRS carries through.
  const std::string csv = (dir_ / "t.csv").string();
  ASSERT_EQ(Orvane("grid " + grd + " --method nn --intervals 10 -o " + csv).status, 0);
  EXPECT_NE(Orvane("info " + csv).out.find("blank      55 cells\n"), std::string::npos);
  const std::string tif = (dir_ / "t.tif").string();
  ASSERT_EQ(Orvane("grid " + grd + " --method idw --intervals 10 -o " + tif).status, 0);
  EXPECT_NE(Shell("gdalinfo " + tif).out.find("ID[\"EPSG\",28992]]"), std::string::npos);
  // Contours carry the grid's CRS into GeoJSON, where GDAL finds it.
  const std::string geojson = (dir_ / "t.geojson").string();
  const Outcome contour = Orvane("contour " + grd + " --count 5 -o " + geojson);
  ASSERT_EQ(contour.status, 0) << contour.out;
  const Outcome ogr = Shell("ogrinfo -so -al " + geojson + " 2>&1");
  EXPECT_NE(ogr.out.find("ID[\"EPSG\",28992]]"), std::string::npos) << ogr.out;
  // --crs gives another; one with no EPSG code goes in as WKT.
  ASSERT_EQ(Orvane("contour " + grd + " --crs EPSG:4326 -o " + geojson).status, 0);
  EXPECT_NE(Shell("ogrinfo -so -al " + geojson).out.find("ID[\"EPSG\",4326]]"), std::string::npos);
  const std::string local = (dir_ / "local.geojson").string();
  ASSERT_EQ(Orvane("contour " + grd + " --crs '+proj=tmerc +lat_0=0 +lon_0=7 +k=1 +x_0=0 +y_0=0 +ellps=GRS80' -o " + local).status, 0);
  EXPECT_NE(Shell("ogrinfo -so -al " + local).out.find("METHOD[\"Transverse Mercator\""), std::string::npos);
  // The grid draws as it is.
  const std::string png = (dir_ / "t.png").string();
  const Outcome render = Orvane("render " + grd + " --plot-type 2d --size 300x300 -o " + png);
  ASSERT_EQ(render.status, 0) << render.out;
}

TEST_F(Cli, GridsAreWrittenInTheFormatTheirExtensionNames) {
  const std::string points = Write("tri.xyz", TrianglePoints());
  for (const std::string extension : {".tif", ".nc", ".asc", ".grd"}) {
    const std::string out = (dir_ / ("g" + extension)).string();
    const Outcome run = Orvane("grid " + points + " --method nn --intervals 20 --crs EPSG:28992 -o " + out);
    ASSERT_EQ(run.status, 0) << extension << run.out;
    const Outcome gdal = Shell("gdalinfo -json " + out);
    ASSERT_EQ(gdal.status, 0) << gdal.out;
    const nlohmann::json facts = nlohmann::json::parse(gdal.out);
    EXPECT_EQ(facts["size"], nlohmann::json::array({21, 21})) << extension;
    const std::vector<double> transform = facts["geoTransform"];
    EXPECT_NEAR(transform[0], -0.25, 1e-12) << extension;
    EXPECT_NEAR(transform[1], 0.5, 1e-12) << extension;
    EXPECT_NEAR(transform[3], 10.25, 1e-12) << extension;
    EXPECT_NEAR(transform[5], -0.5, 1e-12) << extension;
    EXPECT_TRUE(facts["bands"][0].contains("noDataValue")) << extension;
    EXPECT_NE(facts["coordinateSystem"]["wkt"].get<std::string>().find("Amersfoort / RD New"), std::string::npos) << extension;
  }
  EXPECT_NE(Shell("gdalinfo " + (dir_ / "g.tif").string()).out.find("COMPRESSION=DEFLATE"), std::string::npos);
  // Formats it cannot write are named, and no work is done for them.
  const Outcome jpg = Orvane("grid " + points + " --method idw -o " + (dir_ / "t.jpg").string());
  EXPECT_EQ(jpg.status, 2);
  EXPECT_EQ(jpg.out, "orvane: " + (dir_ / "t.jpg").string() +
                         ": cannot write .jpg files; the grid formats are .tif, .nc, .asc, .grd, .csv\n");
  const Outcome picture = Orvane("render --sample -o " + (dir_ / "t.jpg").string());
  EXPECT_EQ(picture.out, "orvane: " + (dir_ / "t.jpg").string() +
                             ": cannot write .jpg files; orvane render writes .png (or - for standard output)\n");
  EXPECT_EQ(Orvane("contour " + points + " -o " + (dir_ / "c.txt").string()).out,
            "orvane: " + (dir_ / "c.txt").string() + ": cannot write .txt files; orvane contour writes .geojson or .json\n");
  EXPECT_FALSE(std::filesystem::exists(dir_ / "t.jpg"));
  // Standard output: CSV by default, a text format on request, a PNG; never GeoTIFF.
  const Outcome text = Shell(std::string(ORVANE_CLI_PATH) + " grid " + points + " --method idw --intervals 1 -o - 2>/dev/null");
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out.rfind("0,0,", 0), 0u) << text.out;
  EXPECT_EQ(std::count(text.out.begin(), text.out.end(), '\n'), 4);
  const Outcome asc = Shell(std::string(ORVANE_CLI_PATH) + " grid " + points + " --method idw --intervals 1 -o - --format asc");
  EXPECT_EQ(asc.out.rfind("ncols        2\n", 0), 0u) << asc.out;
  EXPECT_EQ(Orvane("grid " + points + " --method idw -o - --format tif").out,
            "orvane: GeoTIFF cannot be written to standard output; name a file\n");
  const Outcome png = Shell(std::string(ORVANE_CLI_PATH) + " render --sample --size 64x48 -o - | head -c 8 | od -An -tx1");
  EXPECT_EQ(png.out, " 89 50 4e 47 0d 0a 1a 0a\n");
}

TEST_F(Cli, InputThatIsNotDataIsRefusedWithTheOptionThatHelps) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "empty.xyz: no points were found (no line holds X, Y and Z numbers)\n"},
      {"hello world\n", "empty.xyz: no points were found (no line holds X, Y and Z numbers)\n"},
      {"1 2 3\n4 5 6 7\n", "empty.xyz:2: expected 3 numbers (X, Y, Z), found 4 fields; pick the X, Y and Z columns with --columns X,Y,Z\n"},
      {"1 2 3\n4 5\n", "empty.xyz:2: expected 3 numbers (X, Y, Z), found 2 fields; leave out rows with missing values with --skip-invalid\n"}};
  for (const auto& [text, message] : cases) {
    const std::string file = Write("empty.xyz", text);
    const Outcome run = Orvane("info " + file);
    EXPECT_EQ(run.status, 2) << text;
    EXPECT_EQ(run.out, "orvane: " + (dir_ / message).string()) << text;
  }
  // Decimal commas with semicolons; -9999 as no data; a vector layer's Z by name.
  const Outcome comma = Orvane("info --json " + Write("c.csv", "x;y;z\n0;0;1,5\n1;0;2,5\n0;1;3,5\n"));
  ASSERT_EQ(comma.status, 0) << comma.out;
  EXPECT_EQ(nlohmann::json::parse(comma.out)["zmax"], 3.5);
  const std::string missing = Write("m.xyz", "0 0 1\n1 0 -9999\n0 1 3\n2 2 4\n");
  const Outcome nodata = Orvane("info --json --nodata -9999 " + missing);
  ASSERT_EQ(nodata.status, 0) << nodata.out;
  EXPECT_NE(nodata.out.find("orvane: " + missing + ": left out 1 point with no data\n"), std::string::npos);
  EXPECT_NE(nodata.out.find("\"zmin\":1.0"), std::string::npos) << nodata.out;
  const std::string layer = Write("p.geojson", R"({"type":"FeatureCollection","features":[
    {"type":"Feature","properties":{"zinc":1},"geometry":{"type":"Point","coordinates":[0,0]}},
    {"type":"Feature","properties":{"zinc":2},"geometry":{"type":"Point","coordinates":[1,0]}},
    {"type":"Feature","properties":{"zinc":3},"geometry":{"type":"Point","coordinates":[0,1]}}]})");
  EXPECT_EQ(Orvane("info " + layer).out,
            "orvane: " + layer + ": the points have no Z; name the field that holds it (one of zinc); give it with --z-field NAME\n");
  const Outcome zinc = Orvane("info --json --z-field zinc " + layer);
  EXPECT_EQ(nlohmann::json::parse(zinc.out)["points"], 3);
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

TEST_F(Cli, NaturalNeighbourMapsStopAtTheDataHullUnlessTheyExtrapolate) {
  const std::string points = Write("tri.xyz", TrianglePoints());
  const auto coloured = [&](const std::string& options) {
    const std::string out = (dir_ / "nn.png").string();
    const Outcome run = Orvane("render " + points + " --plot-type 2d --size 300x300 --no-legend --resample nn --intervals 40 " +
                               options + " -o " + out);
    EXPECT_EQ(run.status, 0) << run.out;
    return ColouredPixels(ReadPng(out));
  };
  const int blank = coloured(""), full = coloured("--extrapolate"), asked = coloured("--blank-outside-hull");
  // The hull is half the box: the blanked map about half the extrapolated one.
  EXPECT_NEAR(static_cast<double>(blank) / full, 0.5, 0.06) << blank << " " << full;
  EXPECT_EQ(asked, blank);
  EXPECT_EQ(Orvane("render " + points + " --blank-outside-hull -o " + (dir_ / "x.png").string()).out,
            "orvane: --blank-outside-hull applies with --resample only\n");
}


TEST_F(Cli, VariogramsAndKrigingDefaultsFollowTheData) {
  const std::string meuse = std::string(ORVANE_SHARED_DATA) + "/meuse.csv";
  const Outcome run = Orvane("variogram --json " + meuse);
  ASSERT_EQ(run.status, 0) << run.out;
  const nlohmann::json v = nlohmann::json::parse(run.out);
  ASSERT_EQ(v["bins"].size(), 15u);
  EXPECT_EQ(v["bins"][0]["pairs"], 57);
  EXPECT_NEAR(v["bins"][0]["distance"].get<double>(), 79.292437455826644, 1e-9);
  ASSERT_EQ(v["models"].size(), 4u);
  EXPECT_EQ(v["models"][0]["model"], "exponential");
  for (std::size_t k = 1; k < 4; ++k) EXPECT_LE(v["models"][k - 1]["sse"].get<double>(), v["models"][k]["sse"].get<double>());
  const Outcome text = Orvane("variogram " + meuse);
  EXPECT_NE(text.out.find("79.2924       37363         57\n"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("exponential  9486.6        163285        1145.13       1.79147e+06\n"), std::string::npos) << text.out;
  // Kriging without a model takes the best fit, and says so; a given model wins.
  const std::string out = (dir_ / "k.csv").string();
  const Outcome fitted = Orvane("grid " + meuse + " --method kriging --intervals 4 -o " + out);
  ASSERT_EQ(fitted.status, 0) << fitted.out;
  EXPECT_NE(fitted.out.find("orvane: kriging with the fitted exponential model: nugget 9486.6, sill 172772, range 1145.13"),
            std::string::npos)
      << fitted.out;
  const Outcome given =
      Orvane("grid " + meuse + " --method kriging --model spherical --nugget 0 --sill 1 --range 900 --intervals 4 -o " + out);
  EXPECT_EQ(given.out.find("fitted"), std::string::npos) << given.out;
  // What is not given is fitted: here the spherical model's nugget, sill and range.
  EXPECT_NE(Orvane("grid " + meuse + " --method kriging --model spherical --intervals 4 -o " + out)
                .out.find("orvane: kriging with the spherical model: nugget 24806.6 (fitted), sill 159556 (fitted), "
                          "range 831.117 (fitted)"),
            std::string::npos);
  // The kriging variance, on the same nodes in the same format.
  const std::string variance = (dir_ / "v.csv").string();
  ASSERT_EQ(Orvane("grid " + meuse + " --method kriging --intervals 4 --variance " + variance + " -o " + out).status, 0);
  EXPECT_EQ(Lines(variance).size(), 25u);
  EXPECT_EQ(Orvane("grid " + meuse + " --method idw --variance " + variance + " -o " + out).out,
            "orvane: --variance applies to --method kriging only.\n");
  EXPECT_EQ(Orvane("grid " + meuse + " --method kriging --variance v.tif -o " + out).out,
            "orvane: --variance v.tif must be a file of the grid's own format (.csv)\n");
  EXPECT_EQ(Orvane("grid " + meuse + " --method kriging --variance " + out + " -o " + out).out,
            "orvane: --variance must name another file than -o\n");
  // Values that do not vary fit no model: the bins are printed, and kriging keeps its
  // defaults, which reproduce the constant.
  std::string lattice = "x,y,z\n";
  for (int k = 0; k < 25; ++k) lattice += std::to_string(k % 5) + "," + std::to_string(k / 5) + ",5\n";
  const std::string flat = Write("flat.csv", lattice);
  const Outcome bins = Orvane("variogram " + flat);
  EXPECT_EQ(bins.status, 0);
  EXPECT_NE(bins.out.find("orvane: no model was fitted: Every semivariance is 0: the values do not vary"), std::string::npos)
      << bins.out;
  ASSERT_EQ(Orvane("grid " + flat + " --method kriging --intervals 2 -o " + out).status, 0);
  for (const std::string& line : Lines(out)) EXPECT_NEAR(std::stod(line.substr(line.rfind(',') + 1)), 5.0, 1e-12) << line;
}


TEST_F(Cli, VariogramPlotDrawsTheBinsAndEveryFittedCurve) {
  const std::string meuse = std::string(ORVANE_SHARED_DATA) + "/meuse.csv";
  const std::string out = (dir_ / "v.png").string();
  const Outcome run = Orvane("variogram " + meuse + " --plot " + out + " --size 500x400");
  ASSERT_EQ(run.status, 0) << run.out;
  const Png png = ReadPng(out);
  ASSERT_EQ(png.width, 500);
  ASSERT_EQ(png.height, 400);
  // Each curve in its colour (best first: blue, orange, green, pink), and the dark dots.
  const std::uint32_t colours[] = {0xB27200, 0x009FE6, 0x739E00, 0xA779CC};
  for (const std::uint32_t colour : colours) {
    int n = 0;
    for (int y = 0; y < png.height; ++y) {
      for (int x = 0; x < png.width; ++x) n += png.At(x, y) == colour;
    }
    EXPECT_GT(n, 150) << std::hex << colour;
  }
  int dark = 0;
  for (int y = 0; y < png.height; ++y) {
    for (int x = 0; x < png.width; ++x) dark += png.At(x, y) == 0x282828;
  }
  EXPECT_GT(dark, 15 * 20);  // fifteen dots
  EXPECT_EQ(Orvane("variogram " + meuse + " --plot v.svg").out, "orvane: v.svg: --plot writes .png (or - for standard output)\n");
}

TEST_F(Cli, CrossValidationSummarisesAndWritesTheResiduals) {
  const std::string meuse = std::string(ORVANE_SHARED_DATA) + "/meuse.csv";
  // gstat's krige.cv for this model: me 1.66299, rmse 226.804, msdr 0.929825.
  const Outcome run = Orvane("cv " + meuse +
                             " --method kriging --model spherical --nugget 20000 --sill 170000 --range 1000 --no-block --json");
  ASSERT_EQ(run.status, 0) << run.out;
  const nlohmann::json summary = nlohmann::json::parse(run.out);
  EXPECT_EQ(summary["points"], 155);
  EXPECT_NEAR(summary["me"].get<double>(), 1.6629864426985346, 1e-9);
  EXPECT_NEAR(summary["rmse"].get<double>(), 226.80433110518095, 1e-9);
  EXPECT_NEAR(summary["medae"].get<double>(), 80.039954218711273, 1e-9);
  EXPECT_NEAR(summary["msdr"].get<double>(), 0.92982470293801156, 1e-9);
  // Natural neighbour leaves the hull's points out, as its grid blanks outside the hull.
  const Outcome nn = Orvane("cv " + meuse + " --method nn");
  EXPECT_NE(nn.out.find("leave-one-out cross-validation by natural neighbour of 155 points\n"
                        "12 points have no estimate (outside the others' hull), 143 counted\n"
                        "mean error                     -22.2545\n"),
            std::string::npos)
      << nn.out;
  EXPECT_EQ(nn.out.find("deviation"), std::string::npos);
  const nlohmann::json idw = nlohmann::json::parse(Orvane("cv " + meuse + " --method idw --json").out);
  EXPECT_FALSE(idw.contains("msdr"));
  // Residuals per point; the hull's points keep their row with empty estimates.
  const std::string residuals = (dir_ / "r.csv").string();
  ASSERT_EQ(Orvane("cv " + meuse + " --method nn -o " + residuals).status, 0);
  const std::vector<std::string> rows = Lines(residuals);
  ASSERT_EQ(rows.size(), 156u);
  EXPECT_EQ(rows[0], "x,y,observed,predicted,residual");
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](const std::string& r) { return r.ends_with(",,"); }), 12);
  const Outcome kriged = Orvane("cv " + meuse + " --method kriging --model linear --nugget 0 --sill 100000 --range 2000 -o -");
  EXPECT_TRUE(kriged.out.starts_with("x,y,observed,predicted,residual,variance,zscore\n181072,333611,1022,")) << kriged.out;
  EXPECT_TRUE(Orvane("cv " + meuse + " --method idw --intervals 4").out.starts_with("orvane: cv: unknown option --intervals\n"));
  EXPECT_EQ(Orvane("cv " + meuse + " --method idw --extrapolate").out, "orvane: --extrapolate applies to --method nn only\n");
  EXPECT_EQ(Orvane("cv " + meuse + " --method idw --radius 1").out,
            "orvane: no point could be estimated from the others (no other point in range)\n");
}

TEST_F(Cli, RenderShowsOnlyWhatTheKrigingStandardErrorSupports) {
  const std::string meuse = std::string(ORVANE_SHARED_DATA) + "/meuse.csv";
  const std::string out = (dir_ / "se.png").string();
  const auto render = [&](const std::string& options) {
    const Outcome run = Orvane("render " + meuse + " --plot-type 2d --size 300x300 --no-legend --resample kriging " +
                               "--model spherical --nugget 20000 --sill 170000 --range 1000 --intervals 10 " + options +
                               " -o " + out);
    EXPECT_EQ(run.status, 0) << run.out;
    return std::make_pair(run.out, ColouredPixels(ReadPng(out)));
  };
  const auto [all, full] = render("");
  const auto [none, kept] = render("--variance 1e9");
  const auto [some, masked] = render("--variance 250");
  EXPECT_EQ(none, "orvane: 0 of 121 cells have a kriging standard error above 1e+09 and are left blank\n");
  EXPECT_NEAR(kept, full, full / 20);  // the same map (a grid's cells may split along the other diagonal)
  EXPECT_NE(some.find(" of 121 cells have a kriging standard error above 250 and are left blank"), std::string::npos);
  EXPECT_LT(masked, full * 2 / 3);
  EXPECT_GT(masked, full / 10);
  EXPECT_EQ(Orvane("render " + meuse + " --resample idw --variance 3 -o " + out).out,
            "orvane: --variance applies to --resample kriging only\n");
  const Outcome nothing = Orvane("render " + meuse + " --resample kriging --variance 1 -o " + out);
  EXPECT_EQ(nothing.status, 2);
  EXPECT_NE(nothing.out.find("orvane: --variance 1 leaves no cell to draw: the least standard error is "), std::string::npos);
}

TEST_F(Cli, DevicesAndPipesAreWrittenStraightThrough) {
  const std::string meuse = std::string(ORVANE_SHARED_DATA) + "/meuse.csv";
  for (const std::string& command : std::vector<std::string>{"render --sample", "contour " + meuse, "grid " + meuse + " --method idw", "triangulate " + meuse}) {
    const Outcome run = Orvane(command + " -o /dev/null");
    EXPECT_EQ(run.status, 0) << command << ": " << run.out;
  }
  // Through a named pipe, the same bytes as the file, and nothing left beside it.
  const std::string file = (dir_ / "g.csv").string(), pipe = (dir_ / "pipe").string();
  ASSERT_EQ(Orvane("grid " + meuse + " --method idw --intervals 3 -o " + file).status, 0);
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const Outcome streamed = Shell("(cat " + pipe + " > " + (dir_ / "read.csv").string() + " &) ; " +
                                 std::string(ORVANE_CLI_PATH) + " grid " + meuse + " --method idw --intervals 3 -o " + pipe +
                                 " && sleep 0.2");
  EXPECT_EQ(streamed.status, 0) << streamed.out;
  EXPECT_EQ(Slurp((dir_ / "read.csv").string()), Slurp(file));
  std::size_t entries = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir_)) ++entries;
  EXPECT_EQ(entries, 3U);  // g.csv, pipe, read.csv
  // A block device keeps the old protection.
  if (std::filesystem::is_block_file("/dev/loop0")) {
    EXPECT_NE(Orvane("triangulate " + meuse + " -o /dev/loop0").out.find("it is not a regular file"), std::string::npos);
  }
}

TEST_F(Cli, LocalInverseDistanceBlanksNodesWithNoPointInRange) {
  // Points on the left half only; a radius of 1 leaves the right half of the grid blank.
  std::ostringstream text;
  for (int i = 0; i <= 5; ++i) {
    for (int j = 0; j <= 10; ++j) text << i << ' ' << j << ' ' << i + j << '\n';
  }
  const std::string file = Write("left.xyz", text.str());
  const std::string out = (dir_ / "l.csv").string();
  const Outcome run = Orvane("grid " + file + " --method idw --max-points 4 --radius 1 --xmax 10 --intervals 10 -o " + out);
  ASSERT_EQ(run.status, 0) << run.out;
  std::size_t blank = 0;
  for (const std::string& line : Lines(out)) blank += line.back() == ',' ? 1u : 0u;
  EXPECT_EQ(blank, 4u * 11u);  // X = 7 .. 10: farther than 1 from every point
  EXPECT_EQ(Orvane("grid " + file + " --method nn --radius 1 -o " + out).out,
            "orvane: --radius applies to --method idw only.\n");
  EXPECT_EQ(Orvane("grid " + file + " --method idw --max-points -1 -o " + out).out,
            "orvane: --max-points must be between 0 (all) and 100000000\n");
}

}  // namespace
