#!/usr/bin/env python3
"""Plays every sound file of a folder through the delay, each with settings drawn at random: variants
for training. Dask spreads the files over this machine, or over others by their scheduler.

    augment_dask.py FOLDER OUT [--variants N] [--workers N | --scheduler ADDRESS]

PYTHONPATH holds the folder of the module vesk (build/release/python) where the workers run. What a
file becomes depends on its name alone: the bytes are the same from one worker and from many.
"""

import argparse
import hashlib
import pathlib
import random
import struct
import sys

from dask.distributed import Client, as_completed


def settings_of(name, variant):
    """Drawn by the name, so that no order of work changes them."""
    key = hashlib.sha256(f"{name} {variant}".encode()).digest()
    draw = random.Random(key)
    return int.from_bytes(key[:4], "little"), {
        "delay": (draw.uniform(0.02, 0.6), draw.uniform(0.02, 0.6)),
        "feedback": draw.uniform(0, 0.8),
        "mix": draw.uniform(0.2, 0.8),
        "channel_mode": draw.choice(["stereo", "pingpong", "midside"]),
        "reverb": draw.choice([0, draw.uniform(0, 0.6)]),
        "wobble": draw.choice([0, draw.uniform(0, 0.5)]),
    }


def augment(source, target, name, variant):
    """Runs on a worker. Gives the file written."""
    import numpy
    import soundfile
    import vesk

    sound, rate = soundfile.read(source, dtype="float32", always_2d=True)
    if sound.shape[1] > 2:
        raise ValueError(f"{source}: {sound.shape[1]} channels, expected 1 or 2")
    seed, settings = settings_of(name, variant)
    effect = vesk.Vesk(rate, seed=seed, **settings)
    dry = numpy.concatenate([sound, numpy.zeros((rate, sound.shape[1]), "float32")])
    wet = effect.process(dry[:, 0] if sound.shape[1] == 1 else numpy.ascontiguousarray(dry.T))
    # Complete or not there at all.
    unfinished = target + ".part"
    samples = wet.T.astype("<f4").tobytes()
    # By hand: soundfile's library notes the time of writing in a WAV file of floats.
    header = struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + len(samples), b"WAVE", b"fmt ", 16, 3, 2,
                         rate, 8 * rate, 8, 32, b"data", len(samples))
    pathlib.Path(unfinished).write_bytes(header + samples)
    pathlib.Path(unfinished).replace(target)
    return target


def main():
    words = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    words.add_argument("folder", type=pathlib.Path)
    words.add_argument("out", type=pathlib.Path)
    words.add_argument("--variants", type=int, default=1, help="of each file [1]")
    where = words.add_mutually_exclusive_group()
    where.add_argument("--workers", type=int, default=2, help="on this machine [2]")
    where.add_argument("--scheduler", help="address of one that runs already")
    given = words.parse_args()
    files = sorted(f for f in given.folder.rglob("*")
                   if f.suffix.lower() in {".wav", ".flac", ".aiff", ".ogg"})
    if not files:
        sys.exit(f"augment_dask: {given.folder}: no sound files there")

    client = (Client(given.scheduler) if given.scheduler else
              Client(n_workers=given.workers, threads_per_worker=1, dashboard_address=None))
    with client:
        jobs = {}
        for file in files:
            name = file.relative_to(given.folder)
            for variant in range(given.variants):
                target = given.out / name.parent / f"{name.stem}-{variant}{name.suffix}.wav"
                target.parent.mkdir(parents=True, exist_ok=True)
                job = client.submit(augment, str(file.resolve()), str(target.resolve()), str(name),
                                    variant, pure=False)
                jobs[job] = file
        failed = 0
        for done, job in enumerate(as_completed(jobs), 1):
            if job.status == "error":
                failed += 1
                print(f"augment_dask: {jobs[job]}: {job.exception()}", file=sys.stderr)
            if sys.stderr.isatty():
                print(f"\r{done} of {len(jobs)}", end="", file=sys.stderr)
    print(f"{len(jobs) - failed} files written, {failed} failed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
