# The two commands of the README. Both install missing packages first.
BUILD      ?= build
TEST_BUILD ?= build-test
BENCH_BUILD ?= build-bench
JOBS       ?= $(shell nproc)

.PHONY: run test build bench deps clean format package install

deps:
	@scripts/install-deps

build: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUORVANT_BUILD_TESTS=OFF >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	@scripts/run-example $(BUILD)

test: deps
	@cmake -S . -B $(TEST_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQUORVANT_SANITIZE=ON >/dev/null
	@cmake --build $(TEST_BUILD) -j $(JOBS)
	@cd $(TEST_BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

# A Debian package of the release build (the .deb lands in $(BUILD)).
package: build
	@cd $(BUILD) && cpack -G DEB

# Installs the release build; PREFIX=/usr/local unless given.
PREFIX ?= /usr/local
install: build
	@cmake --install $(BUILD) --prefix $(PREFIX)

bench: deps
	@cmake -S . -B $(BENCH_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUORVANT_BUILD_TESTS=OFF -DQUORVANT_BUILD_BENCH=ON >/dev/null
	@cmake --build $(BENCH_BUILD) -j $(JOBS)
	@scripts/run-benchmarks $(BENCH_BUILD)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) $(TEST_BUILD) $(BENCH_BUILD)
