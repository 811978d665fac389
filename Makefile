# Each target installs the Debian packages that it needs when they are missing.

.PHONY: help setup demo test lint sanitize ci test-full coverage bench soak fuzz mutation packages arm64 clean

help:
	@echo "make demo       build, then measure the sample recording"
	@echo "make test       build with assertions and run all tests"
	@echo "make lint       count of test lines, formatting, layers, types, static analysis"
	@echo "make sanitize   the library's tests under address and undefined-behaviour sanitizers"
	@echo "make ci         test, lint and sanitize"
	@echo "make test-full  test, lint, all tests under sanitizers, valgrind, release, other processors, browser"
	@echo "make bench      print speed as ratios measured in one run"
	@echo "make coverage   line and branch coverage of src/"
	@echo "make soak       memory over a million calls, and of long records"
	@echo "make fuzz       fuzz targets under sanitizers, 60 seconds each; SECONDS=600 for more"
	@echo "make mutation   small faults seeded into src/, and which of them the tests notice"
	@echo "make packages   Debian packages and the Python wheel, built and tried in a fresh Debian"
	@echo "make arm64      tests under emulation of an arm64 processor, and the packages for it"
	@echo "make setup      install all Debian packages that the targets need"

setup:
	@scripts/setup all

demo:
	@scripts/setup build
	@cmake --preset release -D RT305_4_BUILD_TESTS=OFF >/dev/null
	@cmake --build --preset release
	@scripts/demo build/release

test:
	@scripts/setup test
	@cmake --workflow --preset quick

lint:
	@scripts/setup lint
	@cmake --preset debug >/dev/null
	@scripts/lint build/debug

sanitize:
	@scripts/setup test
	@cmake --workflow --preset sanitize-library

ci:
	@.ci/run

test-full: test lint
	@scripts/setup all
	@cmake --workflow --preset full
	@scripts/valgrind build/debug
	@scripts/check-release
	@scripts/check-cpus build/debug
	@scripts/check-report build/debug
	@scripts/check-engines build/debug

coverage:
	@scripts/setup all
	@cmake --preset coverage && cmake --build --preset coverage && ctest --preset coverage
	@scripts/coverage build/coverage

bench:
	@scripts/setup all
	@cmake --preset bench >/dev/null && cmake --build --preset bench
	@scripts/bench build/bench $(BENCH)

soak:
	@scripts/setup test
	@cmake --preset release -D RT305_4_BUILD_TESTS=ON >/dev/null && cmake --build --preset release
	@scripts/soak build/release

fuzz: SECONDS ?= 60
fuzz:
	@scripts/setup fuzz
	@cmake --preset fuzz >/dev/null && cmake --build --preset fuzz
	@scripts/fuzz build/fuzz $(SECONDS)

mutation:
	@scripts/setup test
	@scripts/mutate $(MUTATION)

packages:
	@scripts/setup all
	@scripts/check-packages

arm64:
	@scripts/setup arm64
	@cmake --workflow --preset arm64
	@cmake --preset debug >/dev/null && cmake --build --preset debug --target machine_texts rt305_4 rt305
	@scripts/check-cpus build/debug build/arm64
	@scripts/debian-source build/package-arm64
	@cd build/package-arm64/rt305-4 && DEB_BUILD_OPTIONS=nocheck dpkg-buildpackage -a arm64 -d -b -us -uc
	@lintian --fail-on error --allow-root build/package-arm64/*.deb

clean:
	rm -rf build
