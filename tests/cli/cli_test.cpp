#include <gtest/gtest.h>
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

namespace {

struct Outcome {
  int status = -1;
  std::string out;  // standard output and error together
};

Outcome Orvane(const std::string& arguments) {
  const std::string command = std::string(ORVANE_CLI_PATH) + " " + arguments + " 2>&1";
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
  double area = 0;  // the middle band is the strip 1.25 <= x <= 3: area 3.5
  for (const auto& polygon : features[3]["geometry"]["coordinates"]) {
    const auto& r = polygon[0];
    ASSERT_EQ(r.size(), 4u);
    EXPECT_EQ(r[0], r[3]);
    for (const auto& p : r) {
      EXPECT_GE(p[0].get<double>(), 1.25 - 1e-9);
      EXPECT_LE(p[0].get<double>(), 3.0 + 1e-9);
    }
    area += 0.5 * std::fabs((r[1][0].get<double>() - r[0][0].get<double>()) * (r[2][1].get<double>() - r[0][1].get<double>()) -
                            (r[1][1].get<double>() - r[0][1].get<double>()) * (r[2][0].get<double>() - r[0][0].get<double>()));
  }
  EXPECT_NEAR(area, 3.5, 1e-9);
  // Automatic levels: ten intervals by default, or as asked.
  ASSERT_EQ(Orvane("contour " + file + " --count 4 -o " + out).status, 0);
  std::ifstream again(out);
  EXPECT_EQ(nlohmann::json::parse(again)["features"].size(), 5u);
  EXPECT_EQ(Orvane("contour " + file + " --count 3 --interval 2 -o " + out).status, 2);
  EXPECT_EQ(Orvane("contour " + file + " --interval -1 -o " + out).status, 2);
}

// Lines of a text file.
std::vector<std::string> Lines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
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
    ASSERT_EQ(lines.size(), 10u) << method;
    EXPECT_EQ(lines[0], "DSAA");
    EXPECT_EQ(lines[1], "5 5");
    EXPECT_EQ(lines[2], "0 2");
    EXPECT_EQ(lines[3], "0 1");
    // First row is Y = 0, X increasing; the corners hold the data.
    std::istringstream row(lines[5]);
    std::vector<double> z{std::istream_iterator<double>(row), std::istream_iterator<double>()};
    ASSERT_EQ(z.size(), 5u);
    EXPECT_NEAR(z[0], 3.0, method.find("kriging --range") == 0 ? 1.0 : 1e-9) << method;
    if (method.rfind("nn", 0) == 0) {
      EXPECT_NEAR(z[2], 5.0, 1e-12);  // linear data reproduced
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
      {"--method idw -o " + (dir_ / "g.txt").string(), "the output must end in .csv (x,y,z lines) or .grd (DSAA grid)."},
      {"--method spline -o " + out, "spline"},
      {"--method idw --intervals 0 -o " + out, "--intervals"}};
  for (const auto& [arguments, message] : cases) {
    const Outcome run = Orvane("grid " + file + " " + arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_NE(run.out.find(message), std::string::npos) << arguments << "\n" << run.out;
  }
  EXPECT_FALSE(std::filesystem::exists(out));
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
