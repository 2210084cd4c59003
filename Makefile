# Orvane developer entry points. Each target installs what it needs first.
#   make demo      build the release tree and run the main job
#   make test      build the release tree and run every test
#   make sanitize  build with address + undefined-behaviour sanitizers and run every test
#   make bench     run the benchmarks (release build) and the peer comparisons (CGAL, contourpy)
#   make clang     build everything with clang as well (warnings are errors there too)
#   make fuzz      build the libFuzzer targets (clang, address + undefined) and run each
#                  for FUZZ_SECONDS (default 60) from its seed corpus

RELEASE := build/release
SANITIZE := build/sanitize
CLANG := build/clang
FUZZ := build/fuzz
FUZZ_SECONDS ?= 60
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all deps bench-deps release sanitize-build demo gallery test sanitize bench clang fuzz-build fuzz clean

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

# The sanitizer runtimes of GCC 12 and clang 14 misread a shared library's dynamic TLS
# block as carrying glibc 2.19's header whenever malloc happens to place it 16 bytes past
# a page boundary; LeakSanitizer's exit scan then faults on the bogus range
# ("Tracer caught signal 11"), by chance, after a test has passed. With the interception
# of __tls_get_addr off, those blocks are still scanned: glibc allocates them with malloc
# and they are reachable from the thread's vector of them.
SANITIZER_ENV := ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:intercept_tls_get_addr=0 \
  UBSAN_OPTIONS=print_stacktrace=1 \
  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/support/lsan.supp:print_suppressions=0

sanitize: sanitize-build
	$(SANITIZER_ENV) ctest --test-dir $(SANITIZE) --output-on-failure -j $(JOBS)

$(CLANG)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(CLANG) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVANE_WERROR=ON \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++

clang: deps $(CLANG)/build.ninja
	cmake --build $(CLANG) -j $(JOBS)

$(FUZZ)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(FUZZ) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVANE_WERROR=ON \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DORVANE_FUZZ=ON \
	  -DORVANE_BUILD_TESTS=OFF -DORVANE_BUILD_BENCH=OFF -DORVANE_BUILD_CLI=OFF -DORVANE_BUILD_QT=OFF

fuzz-build: deps $(FUZZ)/build.ninja
	cmake --build $(FUZZ) -j $(JOBS)

fuzz: fuzz-build
	bash scripts/fuzz.sh $(FUZZ) $(FUZZ_SECONDS)

# The configure step runs again so that it finds the peers bench-deps installed.
bench: bench-deps release
	cmake -S . -B $(RELEASE) > /dev/null
	cmake --build $(RELEASE) -j $(JOBS) --target orvane_bench orvane_bench_cgal
	$(RELEASE)/bin/orvane-bench
	$(RELEASE)/bin/orvane-bench-cgal
	/usr/bin/python3 bench/contourpy_bench.py

clean:
	rm -rf build
