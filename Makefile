# The front door. Every target sets up what it needs, Debian packages included.

.PHONY: help setup demo test test-full lint coverage bench soak fuzz mutation packages clean

help:
	@echo "make demo       build, then measure the sample recording"
	@echo "make test       build with assertions and run all tests"
	@echo "make test-full  the same under sanitizers and valgrind, and the linters"
	@echo "make bench      print speed as ratios measured in one run"
	@echo "make coverage   line and branch coverage of src/"
	@echo "make soak       memory over a million calls, and of long records"
	@echo "make fuzz       fuzz targets under sanitizers, 60 seconds each; SECONDS=600 for more"
	@echo "make mutation   small faults seeded into src/, and which of them the tests notice"
	@echo "make packages   Debian packages, tried in a fresh Debian"

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

test-full: test lint
	@cmake --workflow --preset full
	@scripts/valgrind build/debug
	@scripts/check-release
	@scripts/check-cpus build/debug
	@scripts/check-report build/debug

lint:
	@scripts/setup all
	@scripts/lint build/debug

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

clean:
	rm -rf build
