#!/usr/bin/env bash
# Installs the Debian packages Orvane builds and tests with. Idempotent: only the
# packages that are missing are installed, and the package lists are refreshed
# once, only when something has to be installed.
#   --bench  installs only the peers the benchmarks and comparisons use (CGAL, contourpy,
#            matplotlib, scipy, dask, R's gstat, VTK); the tests compare with them where
#            they are present
set -euo pipefail

packages=(
  # build
  g++ cmake ninja-build pkg-config make
  # the second compiler the code must build with, and its sanitizer and libFuzzer
  # runtimes (make fuzz)
  clang libclang-rt-dev
  # persistence and command line
  nlohmann-json3-dev libcli11-dev
  # polygon clipping (Boost.Geometry, header-only)
  libboost-dev
  # resampling engines
  libeigen3-dev libnanoflann-dev
  # off-screen rendering: EGL and the compatibility-profile GL, GLU, Mesa's drivers
  # (llvmpipe where there is no GPU), and libpng for image output
  libegl-dev libgl-dev libglu1-mesa-dev libegl-mesa0 libgl1-mesa-dri libpng-dev
  # text: FreeType renders the glyphs, fontconfig picks the faces, Liberation stands in
  # for Arial, Times New Roman and Courier New
  libfreetype-dev libfontconfig-dev fonts-liberation2
  # the Qt widget, and the X server without a screen its tests run on
  qt6-base-dev xvfb xauth
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  # data files: GDAL reads and writes rasters and vector sources; its utilities (gdalinfo,
  # ogrinfo) check what the command writes
  libgdal-dev gdal-bin
  # pdftoppm reads back the PDF the print test writes
  poppler-utils
  # the Python package (pybind11, numpy) and the Python tests (pytest on Debian's python3)
  pybind11-dev python3-pybind11 python3-numpy python3-pytest
)

if [[ "${1:-}" == "--bench" ]]; then
  packages=(libcgal-dev python3-contourpy python3-matplotlib python3-scipy python3-dask r-cran-gstat python3-vtk9 python3-gdal)
fi

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done

if ((${#missing[@]} == 0)); then
  exit 0
fi

sudo=()
if [[ $(id -u) -ne 0 ]]; then
  sudo=(sudo)
fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
