# Two commands for a fresh machine:
#   make demo   build the tools (Release), check the example crystal in examples/ and run on it
#   make test   build everything (warnings are errors) and run every test
# and two to ship it:
#   make install PREFIX=dir   build (Release) and install under dir (default /usr/local)
#   make package              build (Release) and write a .tar.gz and a .deb to build/packages/
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PREFIX ?= /usr/local

RELEASE_DIR := $(BUILD_DIR)/release
TEST_DIR := $(BUILD_DIR)/test
DEMO_DIR := $(RELEASE_DIR)/demo
BENCH_DIR := $(BUILD_DIR)/bench
BENCH_RUNS ?= 21
BENCH_COMPRESSED_RUNS ?= 7
BENCH_MIB ?= 64
BENCH_COLD_RUNS ?= 5
BENCH_DATA := $(BENCH_DIR)/data-$(BENCH_MIB)
BENCH_COLD_DATA := $(BENCH_DIR)/data-cold
BENCH_REAL_DATA := $(BENCH_DIR)/data-real
BENCH_TOOL = $(BENCH_DIR)/bench/job_vs_cat $(abspath $(BENCH_DIR))/src/get_inter_ener
PACKAGE_DIR := $(BUILD_DIR)/packages
SANITIZE_DIR := $(BUILD_DIR)/sanitize
FUZZ_DIR := $(BUILD_DIR)/fuzz
FUZZ_SECONDS ?= 10
FUZZERS := $(basename $(notdir $(wildcard fuzz/*_fuzz.cpp)))

.PHONY: all demo test test-sanitize fuzz bench install package format-check clean

all: test

$(RELEASE_DIR)/src/get_inter_ener: FORCE
	cmake -S . -B $(RELEASE_DIR) -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF
	cmake --build $(RELEASE_DIR) -j $(JOBS)

demo: $(RELEASE_DIR)/src/get_inter_ener
	rm -rf $(DEMO_DIR)
	mkdir -p $(DEMO_DIR)
	cp examples/*.log examples/*.log.gz examples/int_ener_files.dat examples/neighbor.dat $(DEMO_DIR)/
	cd $(DEMO_DIR) && ../src/check_inter_ener -batch int_ener_files.dat -neighbor
	cd $(DEMO_DIR) && ../src/get_inter_ener -batch int_ener_files.dat -neighbor
	@cd $(DEMO_DIR) && for f in uc_U.dat EH*.dat EL*.dat; do echo "==> $(DEMO_DIR)/$$f <=="; cat $$f; done

test:
	cmake -S . -B $(TEST_DIR) -DCMAKE_BUILD_TYPE=Debug -DWARNINGS_AS_ERRORS=ON
	cmake --build $(TEST_DIR) -j $(JOBS)
	ctest --test-dir $(TEST_DIR) --output-on-failure -j $(JOBS)

# Every test again, built by clang with AddressSanitizer and UndefinedBehaviorSanitizer; any
# report fails the test that met it.
test-sanitize:
	cmake -S . -B $(SANITIZE_DIR) -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug \
	  -DWARNINGS_AS_ERRORS=ON -DSANITIZE=ON
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	# The Slurm test runs the same program on the same crystals as the local workflow test,
	# only through a cluster: a minute and a half that the sanitizers would learn nothing from.
	ctest --test-dir $(SANITIZE_DIR) --output-on-failure -j $(JOBS) -E '^slurm_campaign'

# Each libFuzzer harness for FUZZ_SECONDS, from the seeds in fuzz/corpus/NAME; what it finds
# is kept in build/fuzz/corpus/NAME, a crashing input in build/fuzz/NAME-crash-*.
fuzz:
	cmake -S . -B $(FUZZ_DIR) -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DBUILD_TESTING=OFF -DFUZZ=ON
	cmake --build $(FUZZ_DIR) -j $(JOBS)
	@for f in $(FUZZERS); do \
	  mkdir -p $(FUZZ_DIR)/corpus/$$f; \
	  $(FUZZ_DIR)/fuzz/$$f -max_total_time=$(FUZZ_SECONDS) -max_len=8192 -timeout=10 \
	    -print_final_stats=1 -artifact_prefix=$(FUZZ_DIR)/$$f- \
	    $(FUZZ_DIR)/corpus/$$f fuzz/corpus/$$f > $(FUZZ_DIR)/$$f.log 2>&1 || \
	    { tail -40 $(FUZZ_DIR)/$$f.log; echo "$$f failed"; exit 1; }; \
	  echo "$$f: $$(grep -h 'stat::number_of_executed_units' $(FUZZ_DIR)/$$f.log) in $(FUZZ_SECONDS) s"; \
	done

# Generated outputs, kept between runs: three of BENCH_MIB MiB (the last energy line
# BENCH_MIB/16 MiB before the end), and thirty of 16 MiB (24 KiB before the end, as in a real
# single point). The whole job against cat with a warm page cache, through FIFOs, and with a
# cold page cache (every file evicted before each run), BENCH_RUNS alternating runs each
# (BENCH_COLD_RUNS cold); the reader's throughput on one file; the check against the job and
# the job with -verbose, page cache warm and cold, on the three large outputs and on the example
# crystal; the job on the three outputs compressed with each format (compressed once and kept)
# against zcat, bzcat, xzcat and zstdcat in BENCH_COMPRESSED_RUNS alternating runs. Last, the
# many-crystals workflow on a generated campaign of 100000 small crystals
# (build/bench/campaign-100000, kept; about 5 GB), warm cache: its jobs built and the whole
# campaign on 2 cores; and site_energies against the check on the example crystal, then on a
# campaign of 10000 (build/bench/campaign-10000, kept) in one process. Last, crystals of real
# size (build/bench/data-real, kept; about 8 GB: 40 crystals of 4 sites, 12 outputs of 16 MiB
# each): site_energies in one process and the check against a shell loop of the job, warm and
# cold; the check on one of them against the job with -verbose; and the local campaign on 1000
# of them (hard links to the 40).
bench:
	cmake -S . -B $(BENCH_DIR) -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DBUILD_BENCHMARKS=ON
	cmake --build $(BENCH_DIR) -j $(JOBS)
	$(call generate_logs,$(BENCH_DATA),$(BENCH_MIB),1 2 3,)
	$(call generate_logs,$(BENCH_COLD_DATA),16,$(shell seq 1 30),24)
	$(BENCH_TOOL) $(BENCH_DATA) $(BENCH_RUNS) warm mol_1.log mol_2.log mol_3.log
	$(BENCH_TOOL) $(BENCH_DATA) $(BENCH_RUNS) pipe mol_1.log mol_2.log mol_3.log
	$(BENCH_TOOL) $(BENCH_COLD_DATA) $(BENCH_COLD_RUNS) cold $(foreach s,$(shell seq 1 30),mol_$(s).log)
	$(BENCH_DIR)/bench/log_reader_bench $(BENCH_DATA)/mol_1.log
	printf '1\nmol_1.log mol_2.log mol_3.log\n' > $(BENCH_DATA)/int_ener_files.dat
	printf '#\n#\n1\n1\n1\n1\n' > $(BENCH_DATA)/neighbor.dat
	$(BENCH_DIR)/bench/check_vs_job $(abspath $(BENCH_DIR))/src/get_inter_ener \
	  $(abspath $(BENCH_DIR))/src/check_inter_ener $(BENCH_DATA) $(BENCH_RUNS) 0 \
	  mol_1.log mol_2.log mol_3.log
	rm -rf $(BENCH_DIR)/example && mkdir -p $(BENCH_DIR)/example
	cp examples/*.log examples/*.log.gz examples/int_ener_files.dat examples/neighbor.dat \
	  $(BENCH_DIR)/example/
	$(BENCH_DIR)/bench/check_vs_job $(abspath $(BENCH_DIR))/src/get_inter_ener \
	  $(abspath $(BENCH_DIR))/src/check_inter_ener $(BENCH_DIR)/example $(BENCH_RUNS) 1.2 \
	  $(notdir $(wildcard examples/*.log examples/*.log.gz))
	$(BENCH_DIR)/bench/compressed_vs_decompressor $(abspath $(BENCH_DIR))/src/get_inter_ener \
	  $(BENCH_DATA) $(BENCH_COMPRESSED_RUNS) mol_1.log mol_2.log mol_3.log
	bench/many_crystals.sh $(BENCH_DIR)/src $(BENCH_DIR) 100000 3
	[ -d $(BENCH_DIR)/campaign-10000/crystals ] || { rm -rf $(BENCH_DIR)/campaign-10000.part && \
	  python3 workflows/many-crystals/make_campaign.py $(BENCH_DIR)/campaign-10000.part/crystals \
	  10000 --seed 1 && mv $(BENCH_DIR)/campaign-10000.part $(BENCH_DIR)/campaign-10000; }
	$(BENCH_DIR)/bench/site_energies_bench $(abspath $(BENCH_DIR))/src/check_inter_ener \
	  $(abspath $(BENCH_DIR))/src/site_energies $(BENCH_DIR)/example \
	  $(abspath $(BENCH_DIR))/campaign-10000/crystals $(BENCH_RUNS)
	bench/real_size_data.sh $(abspath $(BENCH_DIR))/bench/log_generator $(BENCH_REAL_DATA) 40 1000
	$(BENCH_DIR)/bench/real_size_crystals $(abspath $(BENCH_DIR))/src/get_inter_ener \
	  $(abspath $(BENCH_DIR))/src/check_inter_ener $(abspath $(BENCH_DIR))/src/site_energies \
	  $(BENCH_REAL_DATA) $(BENCH_RUNS) $(BENCH_COLD_RUNS)
	$(BENCH_DIR)/bench/check_vs_job $(abspath $(BENCH_DIR))/src/get_inter_ener \
	  $(abspath $(BENCH_DIR))/src/check_inter_ener $(BENCH_REAL_DATA)/c01 $(BENCH_RUNS) 0 \
	  $(foreach r,a c n,$(foreach s,1 2 3 4,$(r)$(s).log))
	bench/many_crystals.sh $(BENCH_DIR)/src $(BENCH_REAL_DATA) 1000 3 "" 100

# $(call generate_logs,DIR,MIB,SEEDS,TAIL_KIB): DIR/mol_SEED.log of MIB MiB for each seed,
# unless there; the last energy line TAIL_KIB before the end (empty: MIB/16).
generate_logs = mkdir -p $(1) && cd $(1) && for seed in $(3); do \
	  [ -f mol_$$seed.log ] || { $(abspath $(BENCH_DIR))/bench/log_generator mol_$$seed.part $(2) $$seed $(4) && \
	  mv mol_$$seed.part mol_$$seed.log; } || exit 1; done

install: $(RELEASE_DIR)/src/get_inter_ener
	cmake --install $(RELEASE_DIR) --prefix $(PREFIX)

package: $(RELEASE_DIR)/src/get_inter_ener
	rm -rf $(PACKAGE_DIR)
	cpack --config $(RELEASE_DIR)/CPackConfig.cmake -B $(PACKAGE_DIR)
	rm -rf $(PACKAGE_DIR)/_CPack_Packages
	@ls -l $(PACKAGE_DIR)

format-check:
	clang-format --dry-run --Werror $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR)

FORCE:
