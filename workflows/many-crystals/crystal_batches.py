"""The crystals of a campaign, their batches, and what each batch's result depends on.

Used by the Snakefile when it builds the campaign's jobs. Each batch of crystals gets a manifest,
results/batches/NNNNN.manifest: the settings of the run, the crystals' names and a digest of
what the crystals hold (their lists and every file the batch list names, by size, times and
inode). A manifest is rewritten only when its content changes, so its modification time tells
Snakemake exactly which batches have to run again: a replaced output, a crystal added or
removed, a new program or other settings.
"""
import fcntl
import hashlib
import json
import math
import os
import shutil
import stat
import zlib

# The neighbour table: its name is fixed, in every crystal.
NEIGHBOR_LIST = b"neighbor.dat"


def crystal_names(root):
    """The crystals under `root`: the names (bytes) of its subdirectories, those beginning
    with "." aside, in byte order. Any name the file system allows is a crystal.
    Example: crystal_names("crystals") -> [b"-dash", b"crystal-00001", b"\\xff"]"""
    with os.scandir(os.fsencode(root)) as entries:
        return sorted(e.name for e in entries if not e.name.startswith(b".") and e.is_dir())


def batch_count(crystals, per_batch):
    """The number of batches: the power of two that gives at most `per_batch` crystals a
    batch on average. A power of two changes seldom as crystals come and go, so that adding
    or removing one crystal moves no other crystal to another batch."""
    needed = max(1, math.ceil(crystals / max(1, per_batch)))
    return 1 << (needed - 1).bit_length()


def batch_of(name, batches):
    """The batch (0-based) of the crystal `name` (bytes) among `batches` (a power of two):
    from a checksum of the name alone, so that it depends on no other crystal."""
    return zlib.crc32(name) & (batches - 1)


def file_state(path):
    """What identifies the content of the file at `path` without reading it: size,
    modification and change times, device and inode; "-" when it cannot be reached. A FIFO
    or device is only looked at, never opened."""
    try:
        s = os.stat(path)
    except (OSError, ValueError):
        return "-"
    return "%d %d %d %d %d %o" % (s.st_size, s.st_mtime_ns, s.st_ctime_ns, s.st_dev, s.st_ino,
                                  s.st_mode)


def named_files(batch_list_path):
    """Every word after the first line of the batch list at `batch_list_path`: the names of
    the outputs (and maybe more words, which costs nothing). Only a regular file is read:
    a FIFO in the place of a list is the crystal's concern, not the campaign's."""
    try:
        if not stat.S_ISREG(os.stat(batch_list_path).st_mode):
            return []
        with open(batch_list_path, "rb") as source:
            lines = source.read().split(b"\n")
    except (OSError, ValueError):
        return []
    return list(dict.fromkeys(word for line in lines[1:] for word in line.split()))


def run_status(path):
    """The status file a run of the engine left at `path` (run_engine.py), as a dict; None
    while the run has not ended, or when the file is not one."""
    try:
        with open(path) as source:
            status = json.load(source)
        return status if {"outcome", "detail", "output_state"} <= status.keys() else None
    except (OSError, ValueError, AttributeError):
        return None


def engine_runs(directory):
    """The runs of the crystal in `directory` (bytes) when make_crystal.py made it: [(status
    file, output name as bytes, state, status)], `state` what the run's output stands for in
    the crystal's state: "run" while the output is what the run left (or the run has not
    ended), its file_state once changed by hand. Snakemake redoes the batch after a run by the
    status file's time, so a run's output appearing must not change the manifest as well and
    redo the batch a second time. [] for a crystal of finished outputs."""
    import make_crystal  # the crystal's record and its files' names are its own
    record = make_crystal.read_record(directory)
    if record is None:
        return []
    runs = []
    for stem in record["runs"]:
        _, output, status_name, _ = make_crystal.run_files(stem, record["settings"]["qc_engine"])
        status_path = os.path.join(directory, os.fsencode(status_name))
        status = run_status(status_path)
        state = file_state(os.path.join(directory, os.fsencode(output)))
        if status is None or state == (status["output_state"] if status["outcome"] ==
                                       "ended normally" else "-"):
            state = "run"
        runs.append((status_path, os.fsencode(output), state, status))
    return runs


def failed_runs(directory):
    """The runs of the crystal in `directory` (str) whose engine failed, each as "RUN (what
    happened)", in the crystal's order. Example: ["site002_cation (ended with status 9)"]"""
    return ["%s (%s)" % (os.fsdecode(os.path.basename(path))[:-len(".status")], status["detail"])
            for path, _, _, status in engine_runs(os.fsencode(directory))
            if status is not None and status["outcome"] == "failed"]


def crystal_state(directory, batch_list, runs=()):
    """The state of the crystal in `directory` (bytes): its batch list, its neighbour table
    and every file the batch list names, relative to the directory, each with its
    file_state, or for the output of one of `runs` (engine_runs) the state given there.
    Example: b"int_ener_files.dat 212 ...\\nneighbor.dat ...\\nmol1.log ..." """
    list_path = os.path.join(directory, batch_list)
    names = [batch_list, NEIGHBOR_LIST] + named_files(list_path)
    given = {output: state for _, output, state, _ in runs}
    return b"\n".join(n + b" " + (given.get(n) or file_state(os.path.join(directory, n))).encode()
                      for n in names)


def program_state(program):
    """The path of `program` (a name found on PATH, or a path) and its file_state; None when
    it cannot be found or run."""
    path = shutil.which(program)
    return None if path is None else (os.path.abspath(path), file_state(path))


def write_if_changed(path, text):
    """Writes `text` to `path` unless the file holds it already (its time then stays), under
    a temporary name renamed into place, so that an interrupted write leaves the old file.
    Returns whether it wrote."""
    try:
        with open(path) as old:
            if old.read() == text:
                return False
    except OSError:
        pass
    temporary = "%s.tmp.%d" % (path, os.getpid())
    with open(temporary, "w") as out:
        out.write(text)
    os.replace(temporary, path)
    return True


def write_manifests(root, results, per_batch, settings):
    """Scans the crystals under `root`, writes results/batches/NNNNN.manifest for each batch
    that holds any (removing those of batches that no longer exist) and returns
    ({batch id: [crystal names as str]}, {crystal name as str: batch id}). Names are kept as
    str by the file-system encoding, so that a name outside UTF-8 survives the round trip.
    `settings` (a dict: the program, its options, the time limit...) goes into every manifest.
    Raises RuntimeError when `root` cannot be read.
    """
    try:
        names = crystal_names(root)
    except OSError as error:
        raise RuntimeError("cannot read the crystals' directory %s: %s" % (root, error.strerror))
    batches = batch_count(len(names), per_batch)
    members = {}
    for name in names:
        members.setdefault("%05d" % batch_of(name, batches), []).append(name)
    directory = os.path.join(results, "batches")
    os.makedirs(directory, exist_ok=True)
    list_name = os.fsencode(settings["batch_list"])
    root_bytes = os.fsencode(root)
    for batch, crystals in members.items():
        digest = hashlib.sha256()
        statuses = []
        for name in crystals:
            runs = engine_runs(os.path.join(root_bytes, name))
            statuses += [os.fsdecode(run[0]) for run in runs]
            digest.update(name + b"\0" + crystal_state(os.path.join(root_bytes, name), list_name,
                                                       runs))
            digest.update(b"\0")
        manifest = dict(settings, root=root, crystals=[os.fsdecode(n) for n in crystals],
                        run_statuses=statuses, state=digest.hexdigest())
        write_if_changed(os.path.join(directory, batch + ".manifest"),
                         json.dumps(manifest, indent=0) + "\n")
    # What batches that no longer exist left, and the temporary files of batches that were
    # killed: this process holds the lock, so no other campaign writes here.
    for entry in os.listdir(directory):
        if entry.split(".")[0] not in members or ".tmp." in entry:
            os.remove(os.path.join(directory, entry))
    batch_names = {b: [os.fsdecode(n) for n in c] for b, c in sorted(members.items())}
    return batch_names, {n: b for b, c in batch_names.items() for n in c}


def written_batches(results):
    """The batches whose manifests are in `results` (as write_manifests left them), as
    {batch id: None}."""
    try:
        entries = os.listdir(os.path.join(results, "batches"))
    except OSError:
        return {}
    return {e[:-len(".manifest")]: None for e in sorted(entries) if e.endswith(".manifest")}


def lock_results(results):
    """Takes the campaign's lock on the directory `results` for as long as this process
    lives (the kernel drops it when the process ends, however it ends, so that no lock is
    ever left behind). Returns the open lock file, or raises RuntimeError naming the process
    that holds it."""
    os.makedirs(results, exist_ok=True)
    lock = open(os.path.join(results, ".lock"), "a+")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        lock.seek(0)
        holder = lock.read().strip() or "unknown"
        lock.close()
        raise RuntimeError("another campaign is running on %s (process %s)" % (results, holder))
    lock.truncate(0)
    lock.write("%d\n" % os.getpid())
    lock.flush()
    return lock
