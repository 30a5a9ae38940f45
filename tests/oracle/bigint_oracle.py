#!/usr/bin/env python3
"""bigint_oracle.py <vsmkit>: checks `vsmkit bigint` (batch mode) and `vsmkit rsa` against
Python's integers.

Numbers go up to 4096 bits, half of them made of the words that trip carries and quotient
estimates. Division truncates toward zero; ModPow reduces the base by its magnitude and negates
the result for a negative base and an odd exponent. A negative value whose magnitude has an
all-ones top word loses that word to the length rule of negation, so no operand or result here
has one (the unit tests hold that case). Exits non-zero at the first mismatch.
"""
import math
import random
import subprocess
import sys

from oracle_runner import run_oracle

WIDTH = 32768
EDGES = [0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF]
KNOWN_PRIMES = [(1 << p) - 1 for p in (61, 89, 107, 127, 521, 607, 1279, 2203, 2281, 3217)] + [
    (1 << 255) - 19, (1 << 64) + 13]
SMALL_PRIMES = [p for p in range(2, 2000) if all(p % q for q in range(2, int(p ** 0.5) + 1))]


def number(rng, max_bits=4096, signed=True):
    words = rng.randint(1, max_bits // 32)
    if rng.random() < 0.5:
        value = sum(rng.choice(EDGES) << (32 * i) for i in range(words))
    else:
        value = rng.getrandbits(32 * words) >> rng.randint(0, 31)
    return -(value or 1) if signed and rng.random() < 0.4 else value or 1


def honest(*values):
    return all(v >= 0 or -v >> (32 * ((v.bit_length() - 1) // 32)) != 0xFFFFFFFF for v in values)


def text(value):
    return "-%X" % -value if value < 0 else "%X" % value


def words(value):
    return max(1, (value.bit_length() + 31) // 32)


def wrap(value):  # the two's complement value of the low 32768 bits
    value &= (1 << WIDTH) - 1
    return value - (1 << WIDTH) if value >> (WIDTH - 1) else value


def truncated(a, b):
    q = abs(a) // abs(b)
    return q if (a < 0) == (b < 0) else -q


def modpow(base, exponent, modulus):
    n = abs(modulus)
    if exponent < 0 or words(n) >= 512:
        return 0
    if exponent == 0 or n == 0:
        return int(exponent == 0)
    result = pow(abs(base) % n, exponent, n)
    return -result if base < 0 and exponent % 2 else result


def arithmetic_cases(rng):
    for _ in range(2500):
        op = rng.choice(["add", "sub", "mul", "div", "mod", "cmp"])
        a, b = number(rng), number(rng, rng.choice([64, 512, 4096]))
        if op in ("div", "mod") and rng.random() < 0.5:  # quotients of many words
            b = number(rng, max(64, abs(a).bit_length() // 2))
        result = {"add": lambda: a + b, "sub": lambda: a - b, "mul": lambda: a * b,
                  "div": lambda: truncated(a, b), "mod": lambda: a - truncated(a, b) * b,
                  "cmp": lambda: (a > b) - (a < b)}[op]()
        if honest(a, b, result):
            yield "%s %s %s" % (op, text(a), text(b)), "%d" % result if op == "cmp" else text(result)


def modpow_cases(rng):
    triples = [(5, 3, 7), (5, -3, 7), (5, 0, 1), (-2, 3, 7), (-2, 2, 7), (5, 3, 0),
               (3, 5, (1 << 16352) + 1), (3, 5, (1 << 16320) + 1)]
    for bits in [64] * 30 + [256] * 60 + [1024] * 40 + [2048] * 6 + [4096] * 3:
        modulus = number(rng, bits, signed=False) | (rng.random() < 0.7)
        triples.append((number(rng, rng.choice([bits // 2, bits, bits + 64])),
                        number(rng, bits if bits <= 1024 else 128, signed=False),
                        -modulus if rng.random() < 0.1 else modulus))
    for base, exponent, modulus in triples:
        result = modpow(base, exponent, modulus)
        if honest(base, modulus, result):
            yield "modpow %s %s %s" % (text(base), text(exponent), text(modulus)), text(result)


def euclid_cases(rng):
    yield "gcd 7 0", "0"
    for _ in range(200):
        a, b = rng.getrandbits(rng.randint(1, 1024)) or 1, rng.getrandbits(rng.randint(1, 1024)) or 1
        yield "gcd %X %X" % (a, b), "%X" % math.gcd(a, b)
        if b > 1 and math.gcd(a, b) == 1:
            yield "modinv %X %X" % (a, b), "%X" % pow(a, -1, b)


def bit_cases(rng):
    for a in (number(rng) for _ in range(400)):
        if not honest(a):
            continue
        shift = rng.choice([rng.randint(0, 64), rng.randint(0, 5000), rng.randint(32700, 32800)])
        yield "shl %s %d" % (text(a), shift), text(wrap(a << shift))
        length = words(abs(a))  # a negation keeps the length of its source
        raw = a % (1 << (32 * length))
        bits = 32 * (length - 1) + (raw >> (32 * (length - 1))).bit_length()
        yield "bits %s" % text(a), "%d" % bits
        yield "bytes %s" % text(a), raw.to_bytes(4 * length, "big").hex()
        count = (bits + 7) // 8
        yield "minimal %s" % text(a), (raw % (1 << (8 * count))).to_bytes(count, "big").hex()
    for size in [1, 3, 4, 5, 17, 600, 4095, 4096, 4100]:
        data = bytes([0x80]) + bytes(rng.getrandbits(8) for _ in range(size - 1))
        yield "frombytes %s" % data.hex(), text(wrap(int.from_bytes(data[-4096:], "big")))


def prime_cases(rng):
    yield "isprime 1", "1"  # n - 1 is 0: the round's test of b == 1 passes
    for p in KNOWN_PRIMES:
        yield "isprime %X" % p, "1"
    for p in SMALL_PRIMES[:5] + SMALL_PRIMES[-5:] + [0]:  # small primes are reported not prime
        yield "isprime %X" % p, "0"
    for _ in range(20):
        p, q = rng.sample(KNOWN_PRIMES, 2)
        yield "isprime %X" % (p * q), "0"
        yield "isprime %X" % (rng.getrandbits(rng.randint(8, 3000)) * rng.choice(SMALL_PRIMES)), "0"


def rsa_expected(form, e, n, d):
    block = min(len(e) if form == "fixed" else len(n), len(d))
    r = modpow(int.from_bytes(d[:block], "big"), int.from_bytes(e, "big"), int.from_bytes(n, "big"))
    size = 4 * words(r)
    if form == "fixed":
        return "%d %s" % (size, (r.to_bytes(size, "big") + d[block:]).hex())
    value = r.to_bytes((r.bit_length() + 7) // 8, "big")
    return "%d %s" % (size, (value + d[block:] + bytes(size - len(value))).hex())


def check_runs(vsmkit, rng):
    """The RSA forms, one run each, and the exit status of usage errors."""
    runs = [(["rsa", form, e.hex(), n.hex(), d.hex()], rsa_expected(form, e, n, d))
            for e, n, d in [[bytes(rng.getrandbits(8) for _ in range(rng.randint(low, high)))
                             for low, high in [(1, 64), (1, 256), (0, 300)]] for _ in range(20)]
            for form in ("fixed", "minimal")]
    runs += [(arguments, 2) for arguments in [["bigint", "add", "1"], ["bigint", "shl", "1", "x"],
                                              ["rsa", "odd", "01", "03", "02"], ["base64"], ["x"]]]
    for arguments, expected in runs:
        run = subprocess.run([vsmkit, *arguments], capture_output=True, text=True)
        got = run.stdout.strip() if isinstance(expected, str) else run.returncode
        if got != expected:
            sys.exit("vsmkit %s\n  expected: %s\n  got:      %s" % (" ".join(arguments), expected, got))
    run = subprocess.run([vsmkit, "bigint"], input="pow 1\n\nadd 1 2\n", capture_output=True, text=True)
    if run.returncode != 2 or run.stdout != "error: unknown operation: pow\nerror: missing operation\n3\n":
        sys.exit("vsmkit bigint batch with bad lines: %d %r" % (run.returncode, run.stdout))
    print("vsmkit runs: %d agree" % (len(runs) + 1))


def main():
    rng = random.Random(1107)
    checks = []
    for cases in (arithmetic_cases, modpow_cases, euclid_cases, bit_cases, prime_cases):
        checks.extend(cases(rng))
    run_oracle("bigint", checks, ["bigint"])
    check_runs(sys.argv[1], rng)


if __name__ == "__main__":
    main()
