"""Runs a probe program on generated requests and compares each answer with the oracle's."""
import subprocess
import sys


def run_oracle(name, checks, arguments=()):
    """checks: list of (request line, expected answer line); `arguments` follow the program's
    path. Exits non-zero at a mismatch."""
    if len(sys.argv) != 2:
        sys.exit(sys.modules["__main__"].__doc__)
    run = subprocess.run([sys.argv[1], *arguments],
                         input="".join(line + "\n" for line, _ in checks),
                         capture_output=True, text=True, check=True)
    answers = run.stdout.split("\n")
    for (line, expected), got in zip(checks, answers):
        if got != expected:
            sys.exit("mismatch\n  request:  %s\n  expected: %s\n  got:      %s"
                     % (line, expected, got))
    if len(answers) < len(checks):
        sys.exit("the probe answered %d of %d requests" % (len(answers), len(checks)))
    print("%s oracle: %d cases agree" % (name, len(checks)))
