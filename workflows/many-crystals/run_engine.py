#!/usr/bin/env python3
"""Runs the engine on one input of a crystal made by make_crystal.py.
    run_engine.py INPUT OUTPUT STATUS COMMAND

COMMAND (a shell command in which {input} and {output} stand for the file names) runs in a
directory of the run's own beside INPUT, STATUS's name with ".run" in place of ".status", so
that the engine's scratch files stay there; the directory is removed after. The engine writes
its output there; when the command ends with status 0, the output is renamed to OUTPUT. When it
fails (any other status, a signal, no output), its output is kept beside OUTPUT as
NAME.failed.SUFFIX and the failure is reported on standard error. Either way STATUS gets one
JSON object: "outcome" ("ended normally" or "failed"), "detail", "output" (the name the output
has now) and "output_state" (its file state, as crystal_batches.file_state gives it), and this
script ends with status 0, so that a campaign goes on and its table says which crystals lack
a run. Status 1 only when the command cannot be run at all (status 126 or 127 of the shell: not
found, not executable): the campaign then stops on it and the run is tried again next time.
A run cut short (the job killed, the machine down) leaves no STATUS, and is run again.
"""
import json
import os
import shlex
import shutil
import signal
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import crystal_batches  # noqa: E402


def outcome_of(status, produced):
    """("ended normally" | "failed", detail) for a command's exit `status` (negative: the
    signal that ended it) and whether it `produced` a non-empty output."""
    if status < 0:
        return "failed", "ended by signal %d (%s)" % (-status, signal.Signals(-status).name)
    if status != 0:
        return "failed", "ended with status %d" % status
    if not produced:
        return "failed", "ended with status 0 but wrote no output"
    return "ended normally", "ended with status 0"


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: run_engine.py INPUT OUTPUT STATUS COMMAND")
    input_path, output_path, status_path, template = sys.argv[1:]
    stem, suffix = os.path.splitext(output_path)
    failed_path = stem + ".failed" + suffix
    run_directory = status_path[:-len(".status")] + ".run"
    # What an earlier run of this input left: it is redone from nothing.
    for path in (output_path, failed_path, status_path):
        if os.path.lexists(path):
            os.remove(path)
    shutil.rmtree(run_directory, ignore_errors=True)
    os.mkdir(run_directory)
    shutil.copyfile(input_path, os.path.join(run_directory, os.path.basename(input_path)))
    engine_output = os.path.basename(output_path)
    command = template.format(input=shlex.quote(os.path.basename(input_path)),
                              output=shlex.quote(engine_output))
    status = subprocess.run(command, shell=True, cwd=run_directory,
                            stdin=subprocess.DEVNULL).returncode
    if status in (126, 127):
        shutil.rmtree(run_directory, ignore_errors=True)
        sys.exit("run_engine.py: %s: the command cannot be run (status %d): %s"
                 % (input_path, status, command))
    produced = os.path.join(run_directory, engine_output)
    outcome, detail = outcome_of(status, os.path.isfile(produced) and
                                 os.path.getsize(produced) > 0)
    kept = output_path if outcome == "ended normally" else failed_path
    if os.path.isfile(produced):
        os.replace(produced, kept)
    else:
        kept = None
    shutil.rmtree(run_directory, ignore_errors=True)
    if outcome != "ended normally":
        print("engine run failed: %s: %s: %s; %s" % (input_path, command, detail,
                                                     "its output is kept as " + kept if kept
                                                     else "no output"), file=sys.stderr)
    record = dict(outcome=outcome, detail=detail, command=command,
                  output=kept and os.path.basename(kept),
                  output_state=crystal_batches.file_state(kept) if kept else "-")
    crystal_batches.write_if_changed(status_path, json.dumps(record) + "\n")


if __name__ == "__main__":
    main()
