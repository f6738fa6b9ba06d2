#!/usr/bin/env python3
"""Runs site_energies on a batch of crystals and writes their rows of the campaign table.

    run_batch.py MANIFEST ROWS.csv RESULTS.jsonl LOG

MANIFEST (written when the campaign's jobs are built) names the program, its options, the
root, the crystals and the time limit of one crystal. `site_energies --json OPTIONS -- CRYSTAL...`
runs in the root, and gives one JSON line per crystal as soon as the crystal is done; each line
is kept in RESULTS.jsonl and becomes the crystal's row in ROWS.csv. A crystal that gives no line
within the time limit (an output that is a FIFO nobody writes, a file system that hangs) has
its program stopped and a "timed-out" row; one during which the program dies gets a "failed"
row; the program then goes on with the crystals after it. The program's standard error goes to
LOG. Every crystal has a row whatever it holds, so this script ends with status 0, except when
the program cannot be started or refuses its command line: then status 1 and the reason on
standard error, so that the campaign stops and says so.
"""
import json
import os
import selectors
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import campaign_table  # noqa: E402
import crystal_batches  # noqa: E402

# Crystal names given to one run of the program at most, in bytes: far below the system's
# limit on a command line.
ARGUMENT_BYTES = 128 * 1024


class BatchError(Exception):
    """The batch cannot be done at all: its message says why."""


def names_that_fit(names, start):
    """The end of the run of `names` from `start` whose total length stays within
    ARGUMENT_BYTES (at least one name)."""
    end, size = start, 0
    while end < len(names) and (end == start or size + len(names[end]) + 1 <= ARGUMENT_BYTES):
        size += len(names[end]) + 1
        end += 1
    return end


def reported_name(name):
    """The crystal `name` (bytes) as site_energies' JSON gives it, once read: its UTF-8 as
    characters, each byte outside UTF-8 as the character of that code (\\u00XX)."""
    text = name.decode("utf-8", "surrogateescape")
    return "".join(chr(ord(c) - 0xDC00) if 0xDC80 <= ord(c) <= 0xDCFF else c for c in text)


def remove_temporary_files(root, name, pid):
    """Removes the files a stopped run (process `pid`) may have left in the crystal
    `root/name` while writing its tables (NAME.tmp.PID)."""
    directory = os.path.join(os.fsencode(root), name)
    suffix = b".tmp.%d" % pid
    try:
        for entry in os.listdir(directory):
            if entry.endswith(suffix):
                os.remove(os.path.join(directory, entry))
    except OSError:
        pass


def run_some(manifest, names, start, lines, log):
    """Runs the program on names[start:end] (as many as fit on a command line), putting each
    crystal's JSON line in `lines`; returns the index of the first crystal it did not finish.
    A crystal that exceeds the time limit, or during which the program dies, gets a
    ("timed-out" | "failed", reason) pair in `lines` and is passed over."""
    end = names_that_fit(names, start)
    command = [manifest["program"], "--json"] + manifest["options"] + ["--"] + names[start:end]
    limit = float(manifest["time_limit"])
    try:
        process = subprocess.Popen(command, cwd=manifest["root"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=log)
    except OSError as error:
        raise BatchError("cannot start %s: %s" % (manifest["program"], error.strerror))
    done, pending = start, b""
    with process, selectors.DefaultSelector() as selector:
        selector.register(process.stdout, selectors.EVENT_READ)
        deadline = time.monotonic() + limit
        while True:
            if not selector.select(max(0.0, deadline - time.monotonic())):
                process.kill()
                process.wait()
                remove_temporary_files(manifest["root"], names[done], process.pid)
                lines[done] = ("timed-out", "no result within %g s: site_energies stopped" % limit)
                return done + 1
            block = os.read(process.stdout.fileno(), 65536)
            if not block:
                break
            *complete, pending = (pending + block).split(b"\n")
            for line in complete:
                lines[done] = line
                done += 1
                deadline = time.monotonic() + limit
        status = process.wait()
    if status == 64:
        raise BatchError("%s refused its command line (status 64); see %s" % (
            manifest["program"], log.name))
    if done < end:
        reason = ("site_energies ended by signal %d (%s)" % (-status, signal.Signals(-status).name)
                  if status < 0 else "no result from site_energies (status %d)" % status)
        lines[done] = ("failed", reason)
        return done + 1
    return done


def batch_rows(manifest, results, log):
    """Runs the whole batch: writes every JSON line to `results` and returns the rows."""
    names = [os.fsencode(n) for n in manifest["crystals"]]
    lines = {}
    start = 0
    while start < len(names):
        start = run_some(manifest, names, start, lines, log)
    rows = []
    for index, name in enumerate(manifest["crystals"]):
        line = lines[index]
        if isinstance(line, tuple):
            rows.append(campaign_table.failed_row(name, *line))
            continue
        result = json.loads(line, parse_float=str, parse_int=str)
        # Lines are paired with crystals by their order: a line of another crystal would put
        # its numbers in the wrong row.
        if result["crystal"] != reported_name(names[index]):
            raise BatchError("site_energies answered for %r where %r was expected" % (
                result["crystal"], reported_name(names[index])))
        results.write(line + b"\n")
        row = campaign_table.result_row(name, result)
        # A crystal whose engine failed on a run lacks that output: say so before the reason.
        failed = crystal_batches.failed_runs(os.path.join(manifest["root"], name))
        if failed:
            row["reason"] = "engine runs failed: %s; %s" % (", ".join(failed), row["reason"])
        rows.append(row)
    return rows


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: run_batch.py MANIFEST ROWS.csv RESULTS.jsonl LOG")
    manifest_path, rows_path, results_path, log_path = sys.argv[1:]
    with open(manifest_path) as source:
        manifest = json.load(source)
    # Each file goes under a temporary name first: an interrupted batch leaves none half-written.
    temporary = ".tmp.%d" % os.getpid()
    try:
        with open(log_path, "wb") as log, open(results_path + temporary, "wb") as results:
            rows = batch_rows(manifest, results, log)
    except BatchError as error:
        os.remove(results_path + temporary)
        sys.exit("run_batch.py: %s: %s" % (manifest_path, error))
    campaign_table.write_table(rows_path + temporary, rows)
    os.replace(results_path + temporary, results_path)
    os.replace(rows_path + temporary, rows_path)


if __name__ == "__main__":
    main()
