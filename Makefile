# The front door: what each target does stands in scripts/ and CMakePresets.json.
ARGS ?= tour
JOBS := $(shell nproc)

help:  ## This text
	@echo "Targets:"
	@sed -nE 's/^([a-z-]+):.*  ## (.*)/  make \1	\2/p' $(MAKEFILE_LIST) | expand -t 22

run:  ## Set up, build, and run the tool: make run ARGS="time parse 2014-07-16T13:23:00Z"
	@scripts/setup.sh wine
	@scripts/build.sh release tarv >&2
	@./tarv $(ARGS)

test:  ## Set up, build, and run every test
	@scripts/setup.sh wine package debugger
	@scripts/build.sh release
	@ctest --preset release -j $(JOBS)

test-long:  ## The same with a hundred times the trials, and with what takes minutes
	@scripts/setup.sh wine package debugger
	@scripts/build.sh release
	@scripts/test-long.sh

test-display:  ## The box of failed assertions on a display, answered by real keys: a minute
	@scripts/setup.sh wine display
	@scripts/build.sh release tarv
	@scripts/test-display.sh

test-checked:  ## The same tests under the address and undefined behaviour checkers
	@scripts/setup.sh wine
	@scripts/build.sh checked
	@ctest --preset checked -j $(JOBS)

fuzz:  ## Let fuzzers look for faults in parsers and codecs, FUZZ_SECONDS (20) for each target
	@scripts/install-packages.sh build fuzz
	@scripts/fuzz.sh

mutate:  ## Whether the tests notice planted faults: make mutate SOURCES="calendar hex_codec" COUNT=20
	@scripts/setup.sh wine package
	@scripts/mutate.py --count $(or $(COUNT),20) $(SOURCES)

coverage:  ## Which lines and branches the tests reach: build/coverage/unreached.txt has the others
	@scripts/setup.sh wine
	@scripts/build.sh coverage
	@scripts/coverage.sh

manual:  ## The reference manual, from the headers and docs: build/manual/html/index.html
	@scripts/install-packages.sh manual
	@scripts/manual.sh

man:  ## Rewrite the tool's man page, docs/tarv.1, from what the tool says
	@scripts/setup.sh wine
	@scripts/build.sh release tarv
	@scripts/man_page.py docs/tarv.1 ./tarv

check:  ## Format, layers, headers, exported symbols, lints, the manual and the documents' links
	@scripts/setup.sh check manual
	@scripts/check.sh

exports:  ## Rewrite cmake/exports.txt after a change of what the library exports
	@scripts/setup.sh
	@scripts/build.sh release tarvcore
	@scripts/exports.sh > build/exports.txt
	@mv build/exports.txt cmake/exports.txt

bench:  ## Measure the library and its peers: one table; make bench ROWS="record|throw" shows some
	@scripts/setup.sh wine bench
	@scripts/build.sh bench tarvcore_bench
	@scripts/bench.sh "$(ROWS)"

package:  ## Pack what programs need that use the library: build/tarvcore-VERSION-w32.zip
	@scripts/setup.sh manual package
	@scripts/package.sh

check-package:  ## Whether a build in another folder gives the same package, to the byte: minutes
	@scripts/setup.sh manual package
	@scripts/check_package.sh

clean:  ## Remove what was built here (the cache with ACE stays)
	@rm -rf build

.PHONY: help run test test-long test-display test-checked fuzz mutate coverage manual man check exports \
	bench package check-package clean
