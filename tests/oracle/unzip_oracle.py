#!/usr/bin/env python3
"""unzip_oracle.py <vsmkit>: checks `vsmkit unzip` against archives made by Python's zipfile.

Random trees of stored and deflated entries, folder entries and dates must come out with
zipfile's bytes and the entry's date (local time) as modification time. Entries that can't be
written or would land outside the folder are passed over; names are cut to 255 characters;
of 10,000 entries the last of each name stays. Broken archives fail with exit 1 and the unzipper's exact message.
Exits non-zero at the first mismatch.
"""
import os
import random
import subprocess
import sys
import tempfile
import time
import warnings
import zipfile

LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789 _-.äöüßéλж"


def random_entries(rng):
    names, entries = set(), []
    for _ in range(rng.randint(1, 25)):
        parts = ["".join(rng.choice(LETTERS) for _ in range(rng.randint(1, 12))).strip(". ") or "x"
                 for _ in range(rng.randint(1, 4))]
        prefixes = {"/".join(parts[:i]) for i in range(1, len(parts))}
        if names & prefixes or any(n.startswith("/".join(parts) + "/") for n in names):
            continue  # a file where a folder must go, or the other way round
        names |= prefixes | {"/".join(parts)}
        date = (rng.randint(1980, 2035), rng.randint(1, 12), rng.randint(1, 28),
                rng.randint(0, 23), rng.randint(0, 59), rng.randrange(0, 60, 2))
        if len(parts) > 1 and rng.random() < 0.3:
            entries.append(("/".join(parts[:-1]) + "/", None, date))
        size = rng.choice([0, rng.randint(1, 100), rng.randint(100, 70000)])
        entries.append(("/".join(parts), rng.randbytes(size), date))
    return entries


def write(path, entries, rng=None):
    with zipfile.ZipFile(path, "w") as archive:
        for name, data, date in entries:
            info = zipfile.ZipInfo(name, date)
            info.compress_type = rng.choice([zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED]) if rng \
                else zipfile.ZIP_DEFLATED
            archive.writestr(info, data or b"")
    return path


def patched(data, at, value):
    return data[:at] + value + data[at + len(value):]


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    kit, rng, checks = os.path.abspath(sys.argv[1]), random.Random(1989), 0

    def expect(ok, what):
        nonlocal checks
        checks += 1
        if not ok:
            sys.exit("mismatch: " + what)

    with tempfile.TemporaryDirectory() as work:
        def unzip(archive, name, code=0, message=None, made=()):
            folder = os.path.join(work, name)
            for sub in ("",) + tuple(made):
                os.makedirs(os.path.join(folder, sub), exist_ok=True)
            got = subprocess.run([kit, "unzip", archive, folder], capture_output=True)
            expect(got.returncode == code, "%s: exit %d %s" % (name, got.returncode, got.stderr))
            if message is not None:
                expected = ("vsmkit unzip: %s\n" % message).encode()
                expect(got.stderr == expected, "%s: %r" % (name, got.stderr))
            return folder

        def arrived(folder, entries):
            for name, data, date in entries:
                path = os.path.join(folder, name)
                if data is None:
                    expect(os.path.isdir(path), "folder %r" % name)
                    continue
                expect(open(path, "rb").read() == data, "file %r" % name)
                expect(os.stat(path).st_mtime == time.mktime(date + (0, 0, -1)), "date of %r" % name)

        for round_ in range(25):
            entries = random_entries(rng)
            archive = write(os.path.join(work, "r%d.zip" % round_), entries, rng)
            arrived(unzip(archive, "r%d" % round_), entries)

        date = (2020, 2, 29, 12, 0, 0)
        odd = [("blocked", b"a folder is in the way", date), ("../up.txt", b"out", date),
               ("a/../../up2.txt", b"out", date), (os.path.join(work, "abs.txt"), b"out", date),
               ("../upfolder/", None, date), ("in..side/x..y", b"kept", date),
               ("n" * 300, b"long", date), ("last.txt", b"3", date)]
        folder = unzip(write(os.path.join(work, "odd.zip"), odd), "odd", made=["blocked"])
        arrived(folder, [odd[5], ("n" * 255, b"long", date), odd[-1]])
        expect(not any(os.path.exists(os.path.join(work, name))
                       for name in ("up.txt", "up2.txt", "abs.txt", "upfolder")), "escaped")

        # 10,000 entries over ten names: each file is replaced in turn and the last one stays.
        many = [("many/%d" % (i % 10), b"%d" % i, date) for i in range(10000)]
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")  # zipfile warns of the repeated names
            arrived(unzip(write(os.path.join(work, "many.zip"), many), "many"), many[-10:])

        x = os.path.join(work, "x")
        write(x + ".zip", odd[-1:])
        unzip(x, "x1", 1, 'Cannot find the specified file "%s"' % x)
        os.mkdir(x)  # "x" exists now, and the unzipper finds "x.zip" by its second try
        expect(os.path.exists(os.path.join(unzip(x, "x2"), "last.txt")), "x for x.zip")

        good = open(write(os.path.join(work, "good.zip"),
                          [("one", b"first entry", date), ("two", b"y" * 300, date)]), "rb").read()
        second = good.index(b"PK\3\4", 4)
        zipfile.ZipFile(os.path.join(work, "stored.zip"), "w").writestr("one", b"first entry")
        plain = open(os.path.join(work, "stored.zip"), "rb").read()
        cannot = "Cannot open %s or %s.zip"
        for name, data, message in [
                ("empty", b"", cannot), ("text", b"not a zip", cannot),
                ("half", good[:len(good) // 2], cannot), ("no end record", good[:-22], cannot),
                ("no entries", b"PK\5\6" + bytes(18), cannot),
                ("count raised", patched(good, len(good) - 12, b"\x09"), cannot),
                ("local header lost", patched(good, second, b"X"),
                 "Error -103 with zipfile in OpenCurrentFilePassword\r\n"),
                ("invalid block", patched(good, second + 30 + 3, b"\xff"),
                 "Error -3 with zipfile in ReadCurrentFile\r\n"),
                ("changed byte", patched(plain, 30 + 3, b"F"),
                 "Error -105 with zipfile in CloseCurrentFile\r\n")]:
            path = os.path.join(work, name)
            open(path, "wb").write(data)
            unzip(path, name + " out", 1, message.replace("%s", path))
        unzip(os.path.join(work, "x1"), "folder as zip", 1, cannot.replace("%s", os.path.join(work, "x1")))
        # The folders above the target are made; the target itself is the caller's.
        missing = os.path.join(work, "missing", "deeper")
        got = subprocess.run([kit, "unzip", os.path.join(work, "good.zip"), missing],
                             capture_output=True, text=True)
        expect(got.returncode == 1 and got.stderr == "vsmkit unzip: Error changing into %s\n"
               % missing and os.path.isdir(os.path.dirname(missing)), "missing folder")
        expect(subprocess.run([kit, "unzip", "a"], capture_output=True).returncode == 2, "usage")
    print("unzip oracle: %d checks agree" % checks)


if __name__ == "__main__":
    main()
