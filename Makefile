# Two commands for a fresh machine:
#   make demo   build the tool (Release) and run it on the example crystal in examples/
#   make test   build everything (warnings are errors) and run every test
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

RELEASE_DIR := $(BUILD_DIR)/release
TEST_DIR := $(BUILD_DIR)/test
DEMO_DIR := $(RELEASE_DIR)/demo

.PHONY: all demo test format-check clean

all: test

$(RELEASE_DIR)/src/get_inter_ener: FORCE
	cmake -S . -B $(RELEASE_DIR) -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF
	cmake --build $(RELEASE_DIR) -j $(JOBS)

demo: $(RELEASE_DIR)/src/get_inter_ener
	rm -rf $(DEMO_DIR)
	mkdir -p $(DEMO_DIR)
	cp examples/*.log examples/int_ener_files.dat examples/neighbor.dat $(DEMO_DIR)/
	cd $(DEMO_DIR) && ../src/get_inter_ener -batch int_ener_files.dat -neighbor
	@cd $(DEMO_DIR) && for f in uc_U.dat EH*.dat EL*.dat; do echo "==> $(DEMO_DIR)/$$f <=="; cat $$f; done

test:
	cmake -S . -B $(TEST_DIR) -DCMAKE_BUILD_TYPE=Debug -DWARNINGS_AS_ERRORS=ON
	cmake --build $(TEST_DIR) -j $(JOBS)
	ctest --test-dir $(TEST_DIR) --output-on-failure -j $(JOBS)

format-check:
	clang-format --dry-run --Werror $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR)

FORCE:
