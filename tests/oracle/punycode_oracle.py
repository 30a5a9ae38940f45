#!/usr/bin/env python3
"""punycode_oracle.py <punycode_probe>: checks the punycode encoders against Python's codec.

Labels from a fixed seed mix ASCII (both cases, digits, hyphens), Latin, Greek, Cyrillic, CJK,
emoji and other astral code points. Python's codec appends '-' to an all-ASCII label, which ours
leaves unchanged; Python's 'idna' codec folds case and is no oracle. Exits non-zero at the
first mismatch.
"""
import random

from oracle_runner import run_oracle

ASCII = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-"
SCRIPTS = [[(0xC0, 0x24F)], [(0x391, 0x3C9), (0x410, 0x44F)],
           [(0x4E00, 0x9FFF), (0x3040, 0x30FF), (0xAC00, 0xD7A3)],
           [(0x1F300, 0x1FAFF), (0x10000, 0x1034F), (0x20000, 0x2A6DF), (0x10FF00, 0x10FFFF)]]


def label(rng, length):
    scripts = rng.sample(SCRIPTS + [ASCII], rng.randint(1, 3))
    chars = []
    for _ in range(length):
        script = rng.choice(scripts)
        chars.append(rng.choice(script) if script == ASCII else chr(rng.randint(*rng.choice(script))))
    return "".join(chars)


def encode(text):
    """(encoded, non-basic count) as PunycodeEncode must give them, or None for a refusal."""
    if not text or len(text) > 512:
        return None
    non_basic = sum(ord(ch) >= 0x80 for ch in text)
    return (text.encode("punycode").decode() if non_basic else text), non_basic


def host_answer(host):
    labels = host.split(".")
    if labels[-1] == "":
        labels.pop()  # nothing behind the last dot: no label
    encoded = [encode(part) for part in labels]
    if None in encoded:
        return "0 0 "
    text = ".".join(("xn--" if non_basic else "") + part for part, non_basic in encoded)
    return "%d %d %s" % (len(text) + 1, len(text), text)


def cases(rng):
    lengths = [rng.randint(1, 20) for _ in range(2500)] + [rng.randint(21, 512) for _ in range(80)]
    for length in lengths + [512, 513, 600]:
        text = label(rng, length)
        expected = encode(text)
        yield "L " + text.encode().hex(), "0 0 " if expected is None else "%d %d %s" % (
            len(expected[0]), expected[1], expected[0])
    for _ in range(1500):
        labels = [label(rng, rng.randint(1, 30)) for _ in range(rng.randint(1, 4))]
        shape = rng.random()
        if shape < 0.1:
            labels.append("")  # a trailing dot
        elif shape < 0.15:
            labels.insert(rng.randint(0, len(labels) - 1), "")  # an empty label
        host = ".".join(labels)
        yield "H " + host.encode().hex(), host_answer(host)


def main():
    run_oracle("punycode", list(cases(random.Random(3492))))


if __name__ == "__main__":
    main()
