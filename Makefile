# The daily loop. Each target first installs what is missing (see setup/).
MAKEFLAGS += --no-print-directory

.PHONY: run build test bench lint format setup

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

lint: setup
	@cmake --preset debug >/dev/null
	@setup/lint

format: setup
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

setup:
	@setup/install
