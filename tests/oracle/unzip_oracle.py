#!/usr/bin/env python3
"""unzip_oracle.py <vsmkit>: checks `vsmkit unzip` against archives made by Python's zipfile.

Stored and deflated entries, folder entries, nested paths without folder entries, dates, names
with blanks and non-ASCII letters: every file must come out with zipfile's bytes and with the
entry's date (read as local time) as its modification time. An entry whose file can't be written
is passed over; `x` finds `x.zip` only when `x` itself exists; broken archives, a missing archive
and a missing folder fail with exit 1 and the unzipper's message. Exits non-zero at the first
mismatch.
"""
import os
import random
import subprocess
import sys
import tempfile
import time
import zipfile

LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789 _-.äöüßéλж"


def unzip(kit, archive, folder):
    return subprocess.run([kit, "unzip", archive, folder], capture_output=True, text=True)


def random_archive(rng, path):
    """Writes a random archive; returns its entries as (name, data or None for a folder, date)."""
    entries, folders = [], []
    for _ in range(rng.randint(1, 25)):
        depth = rng.randint(0, 3)
        parts = ["".join(rng.choice(LETTERS) for _ in range(rng.randint(1, 12))).strip(". ") or "x"
                 for _ in range(depth + 1)]
        name = "/".join(parts)
        if any(name == e[0] or name.startswith(e[0] + "/") or e[0].startswith(name + "/")
               for e in entries):
            continue
        date = (rng.randint(1980, 2035), rng.randint(1, 12), rng.randint(1, 28),
                rng.randint(0, 23), rng.randint(0, 59), rng.randrange(0, 60, 2))
        if depth and rng.random() < 0.3:
            folders.append(("/".join(parts[:-1]) + "/", None, date))
        size = rng.choice([0, rng.randint(1, 100), rng.randint(100, 70000)])
        data = bytes(rng.getrandbits(8) for _ in range(size)) if rng.random() < 0.3 else \
            (name.encode() * (size // max(1, len(name)) + 1))[:size]
        entries.append((name, data, date))
    with zipfile.ZipFile(path, "w") as archive:
        for name, data, date in folders + entries:
            info = zipfile.ZipInfo(name, date)
            info.compress_type = rng.choice([zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED])
            archive.writestr(info, data if data is not None else b"")
    return folders + entries


def compare(folder, entries):
    for name, data, date in entries:
        path = os.path.join(folder, name)
        if data is None:
            if not os.path.isdir(path):
                return "folder %r missing" % name
            continue
        with open(path, "rb") as extracted:
            if extracted.read() != data:
                return "file %r differs" % name
        expected = time.mktime(date + (0, 0, -1))
        if os.stat(path).st_mtime != expected:
            return "file %r dated %s, expected %s" % (name, os.stat(path).st_mtime, expected)
    return None


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    kit = os.path.abspath(sys.argv[1])
    rng = random.Random(1989)
    checks = 0

    def expect(ok, what):
        nonlocal checks
        checks += 1
        if not ok:
            sys.exit("mismatch: " + what)

    with tempfile.TemporaryDirectory() as work:
        for round_ in range(40):
            archive = os.path.join(work, "r%d.zip" % round_)
            folder = os.path.join(work, "r%d" % round_)
            os.mkdir(folder)
            entries = random_archive(rng, archive)
            got = unzip(kit, archive, folder)
            expect(got.returncode == 0, "round %d: exit %d %s" % (round_, got.returncode, got.stderr))
            problem = compare(folder, entries)
            expect(problem is None, "round %d: %s" % (round_, problem))

        # An entry in the way of a folder of the same name is passed over; the rest arrive.
        blocked = os.path.join(work, "blocked.zip")
        with zipfile.ZipFile(blocked, "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("first.txt", b"1")
            archive.writestr("busy", b"cannot land")
            archive.writestr("last.txt", b"3")
        folder = os.path.join(work, "blocked")
        os.makedirs(os.path.join(folder, "busy"))
        got = unzip(kit, blocked, folder)
        expect(got.returncode == 0 and os.path.isdir(os.path.join(folder, "busy")) and
               open(os.path.join(folder, "last.txt"), "rb").read() == b"3", "blocked entry")

        # "x" stands for "x.zip" once "x" exists.
        x = os.path.join(work, "x")
        with zipfile.ZipFile(x + ".zip", "w") as archive:
            archive.writestr("inside.txt", b"x")
        os.mkdir(os.path.join(work, "xout"))
        got = unzip(kit, x, os.path.join(work, "xout"))
        expect(got.returncode == 1 and
               got.stderr == 'vsmkit unzip: Cannot find the specified file "%s"\n' % x, "x alone")
        os.mkdir(x)
        got = unzip(kit, x, os.path.join(work, "xout"))
        expect(got.returncode == 0 and os.path.exists(os.path.join(work, "xout", "inside.txt")),
               "x for x.zip")

        good = open(os.path.join(work, "r0.zip"), "rb").read()
        target = os.path.join(work, "xout")
        for name, data in [("empty", b""), ("text", b"just some text"), ("half", good[:len(good) // 2]),
                           ("no end record", good[:-22])]:
            path = os.path.join(work, name)
            with open(path, "wb") as broken:
                broken.write(data)
            got = unzip(kit, path, target)
            expect(got.returncode == 1 and
                   got.stderr == "vsmkit unzip: Cannot open %s or %s.zip\n" % (path, path), name)
        got = unzip(kit, target, target)
        expect(got.returncode == 1 and "Cannot open" in got.stderr, "a folder as archive")
        missing = os.path.join(work, "missing")
        got = unzip(kit, os.path.join(work, "r0.zip"), missing)
        expect(got.returncode == 1 and
               got.stderr == "vsmkit unzip: Error changing into %s\n" % missing, "missing folder")
        expect(unzip(kit, "a", "b").returncode == 1 and
               subprocess.run([kit, "unzip", "a"], capture_output=True).returncode == 2, "usage")
    print("unzip oracle: %d checks agree" % checks)


if __name__ == "__main__":
    main()
