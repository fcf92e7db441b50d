# The front door: thin targets over CMake presets. `make help` lists them.

PRESET ?= release
BUILD = build/$(PRESET)
HUB = $(BUILD)/bin/HUB

.DEFAULT_GOAL := help
.PHONY: help packages build demo model test format clean

help: ## List the targets
	@sed -n 's/^\([a-z]*\):.*## \(.*\)/  make \1\t\2/p' $(MAKEFILE_LIST) | expand -t 18

packages: ## Install the Debian packages that are missing (as root, or through sudo)
	@tools/install-packages

build: packages ## Build everything: frame, reference libraries, HUB, sample product, tests
	@mkdir -p build
	@cmake --preset $(PRESET) > build/configure.log 2>&1 || { cat build/configure.log; false; }
	@cmake --build --preset $(PRESET)

demo: build ## Bring the sample product up, show it, and take it down
	@echo
	@$(HUB) run --bin $(BUILD)/site/bin --seconds 4 --log build/demo.log
	@echo "Every log line of this life: build/demo.log"

model: build ## Print what the frame hands over of the sample product, as JSON
	@$(HUB) model --bin $(BUILD)/site/bin

test: build ## Run every test
	@ctest --preset $(PRESET)

format: ## Format the sources
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean: ## Remove everything that was built
	@rm -rf build
