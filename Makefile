# The daily loop. Each target first installs what is missing (see setup/).
MAKEFLAGS += --no-print-directory

SEED ?= 1
DAYS ?= 40

.PHONY: run build test bench simulate torture lint format setup

run: build
	@build/brightledger run

build: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target programs

test: build
	@cmake --build --preset release
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan
	@ctest --preset release
	@ctest --preset asan

bench: build
	@cmake --build --preset release --target brightledger_bench
	@bench/run

# Days of the home screen in virtual time, from a seed.
simulate: build
	@cmake --build --preset release --target brightledger_simulation
	@build/release/tests/simulation/brightledger_simulation --seed $(SEED) --days $(DAYS)

# Kills, faults and deaths with the real programs; minutes. PART=store-kills runs one part.
torture: build
	@cmake --build --preset release --target store_writer
	@tests/torture/torture.py $(PART)

lint: setup
	@cmake --preset debug >/dev/null
	@setup/lint

format: setup
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

setup:
	@setup/install
