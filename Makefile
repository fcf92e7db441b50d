# Targets for daily work, over CMake presets. `make help` lists them.

PRESET ?= release
BUILD = build/$(PRESET)
HUB = $(BUILD)/bin/HUB

.DEFAULT_GOAL := help
.PHONY: help packages build demo model docs test check-products check-what-if windows windows-test package package-test asan tsan coverage mutants fuzz bench lint lint-tests format clean

help: ## List the targets
	@sed -n 's/^\([a-z -]*\):.*## \(.*\)/  make \1\t\2/p' $(MAKEFILE_LIST) | expand -t 22

packages: ## Install the Debian packages that are missing (as root, or through sudo)
	@tools/install-packages

# $(call configure_and_build,preset)
define configure_and_build
	@mkdir -p build
	@cmake --preset $(1) > build/configure.log 2>&1 || { cat build/configure.log; false; }
	@cmake --build --preset $(1)
endef

build: packages ## Build everything: frame, reference libraries, HUB, sample product, tests
	$(call configure_and_build,$(PRESET))

demo: build ## Run the sample product, start to stop
	@echo
	@tools/run-sample build/demo.log $(HUB) run --bin $(BUILD)/site/bin
	@echo "Every log line of this run: build/demo.log"

model: build ## Print what the frame hands over of the sample product, as JSON
	@$(HUB) model --bin $(BUILD)/site/bin

docs: build ## Put what HUB prints into README.md and docs/ where they show it, its help into the tests
	@tests/docs/shown_output.py --write --hub $(HUB) --site $(BUILD)/site \
	  --fixtures $(BUILD)/fixtures README.md docs/*.md
	@tests/docs/check_rules.py --write --hub $(HUB) --lay-out $(BUILD)/bin/lay_out_case docs/check.md
	@$(HUB) --help > tests/system/help/HUB.txt
	@for command in run check report why replay shake model; do $(HUB) $$command --help > tests/system/help/$$command.txt; done

test: build ## Run every test
	@ctest --preset $(PRESET)

PRODUCTS ?= 1000

check-products: build ## Check random products and compare with what happens: PRODUCTS=, SEED=
	@for mode in good edited run; do \
	  tests/check_load/check_products.py $$mode --hub $(HUB) --fixtures $(BUILD)/fixtures \
	    --program $(BUILD)/site/bin/media.recorder.exe --products $(PRODUCTS) --seed $(SEED) --list || \
	  exit 1; done
	@tests/check_load/check_cost.py --hub $(HUB) --fixtures $(BUILD)/fixtures

RUNS ?= 200
check-what-if: build ## Run and record random products, and compare with what is predicted: RUNS=, SEED=
	@tests/what_if/check_what_if.py --hub $(HUB) --figures $(BUILD)/bin/what_if_figures \
	  --libraries $(BUILD)/tests/what_if/libraries --products $(RUNS) --seed $(SEED)

windows: ## Build everything for Windows x86-64, into build/windows
	@tools/install-packages windows
	@tools/windows-dependencies build/windows-dependencies
	$(call configure_and_build,windows)

windows-test: windows ## Run the Windows demo and every test of it, under Wine
	@cmake/windows/wine start; \
	tools/run-sample build/windows-demo.log \
	  cmake/windows/wine build/windows/bin/HUB.exe run --bin build/windows/site/bin && \
	ctest --preset windows; \
	status=$$?; cmake/windows/wine stop; exit $$status

package: build windows ## Make a zip for Windows and a tar.gz for Linux, in build/packages
	@cpack --config $(BUILD)/CPackConfig.cmake > build/package.log || { cat build/package.log; false; }
	@cpack --config build/windows/CPackConfig.cmake > build/package.log || { cat build/package.log; false; }
	@ls build/packages/*.tar.gz build/packages/*.zip

package-test: package ## Run what is in the packages, unpacked elsewhere, with the build moved away
	@tools/test-package build/packages/*-linux-x86_64.tar.gz $(BUILD)
	@cmake/windows/wine start; \
	tools/test-package build/packages/*-windows-x86_64.zip build/windows cmake/windows/wine; \
	status=$$?; cmake/windows/wine stop; exit $$status

asan tsan: packages ## Run the tests under the address, leak and undefined-behaviour sanitizers; or the thread one
	$(call configure_and_build,$@)
	@ctest --preset $@

coverage: packages ## Show which lines and branches of the frame the tests reach; HTML in build/coverage/html
	@tools/install-packages coverage
	$(call configure_and_build,coverage)
	@find build/coverage -name '*.gcda' -delete
	@ctest --preset coverage
	@mkdir -p build/coverage/html
	@gcovr --txt build/coverage/lines.txt build/coverage; status=$$?; cat build/coverage/lines.txt; exit $$status

N ?= 600
SEED ?= 1
IN ?= src
mutants: build ## Show which wrong lines the tests would not notice: N=600 of SEED=1, in FILES of IN=src; LOADED=1 runs HUB too, RACES=build/tsan that build
	@tools/install-packages mutants
	@tools/mutants --build $(BUILD) -n $(N) --seed $(SEED) --files '$(FILES)' $(if $(LOADED),--loaded) $(if $(RACES),--races $(RACES)) $(IN)

FUZZ_SECONDS ?= 60
fuzz: ## Run each fuzz target for a minute, or FUZZ_SECONDS
	@tools/install-packages fuzz
	$(call configure_and_build,fuzz)
	@fuzz/run build/fuzz $(FUZZ_SECONDS)

bench: ## Run the benchmarks and print what they measure
	@tools/install-packages bench
	$(call configure_and_build,bench)
	@bench/run build/bench

NEWEST ?=
lint: build ## Check the sources' format, and with clang-tidy all but tests and benchmarks, or the NEWEST=N
	@tools/install-packages lint
	@git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror
	@tools/list-sources '$(NEWEST)' 'src/*.cpp' 'reference/*.cpp' 'workbench/*.cpp' 'host/*.cpp' 'samples/*.cpp' 'stub/*.cpp' | \
	xargs -P 2 -n 1 clang-tidy -p $(BUILD) --quiet
	@git grep -l '^#!/bin/sh' -- tools cmake bench fuzz .ci | xargs shellcheck -S warning

TESTS ?= tests/*.cpp
lint-tests: build ## Check the tests with clang-tidy: all, those whose path matches TESTS, or the NEWEST=N
	@tools/install-packages lint
	@tools/list-sources '$(NEWEST)' '$(TESTS)' | xargs -P 2 -n 1 clang-tidy -p $(BUILD) --quiet

format: ## Format the sources
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean: ## Remove everything that was built
	@rm -rf build
