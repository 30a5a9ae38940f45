"""Shared pieces of the vsmhost tests. Paths come from CTest's environment: VSMHOST,
VSM_LIBRARY, VSMCTL, VSMKIT, VSM_PAGE, VSM_FAKE_MODULE, VSM_ARTIFACTS."""
import http.client
import os
import re
import select
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

ENV = os.environ


def folder_with(*programs):
    """A fresh folder holding the programs and the module: a module keeps its files beside the
    program that loads it."""
    folder = tempfile.mkdtemp(prefix="vsmhost-test-")
    for program in programs:
        shutil.copy(ENV[program], folder)
    shutil.copy(ENV["VSM_LIBRARY"], os.path.join(folder, "libvsm.so"))
    return folder


class Host:
    """vsmhost started in a folder of its own on a free port; a context manager."""

    def __init__(self, *arguments, modules=()):
        self.folder = folder_with("VSMHOST")
        shutil.copytree(ENV["VSM_PAGE"], os.path.join(self.folder, "page"))
        command = [os.path.join(self.folder, "vsmhost"), "--port", "0", *arguments]
        for module in modules:
            command += ["--module", module]
        self.errors = open(os.path.join(self.folder, "stderr.txt"), "w+b")
        self.process = subprocess.Popen(command, cwd=self.folder, stdout=subprocess.PIPE,
                                        stderr=self.errors)
        ready = select.select([self.process.stdout], [], [], 30)[0]
        line = self.process.stdout.readline().decode() if ready else ""
        match = re.fullmatch(r"listening on http://127\.0\.0\.1:(\d+)\n", line)
        if not match:
            self.stop()
            raise RuntimeError("vsmhost did not start: %r" % line)
        self.port = int(match.group(1))

    def stop(self):
        """SIGTERM, then the exit status (a clean stop is 0)."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        try:
            status = self.process.wait(30)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
        if status != 0:  # a sanitizer's report, say
            self.errors.seek(0)
            print(self.errors.read().decode(errors="replace"), file=sys.stderr)
        return status

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.stop()
        self.process.stdout.close()
        self.errors.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def request(self, method, target, body=None, headers=None):
        """(status, headers with lower-case names, body bytes), on a new connection."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        try:
            connection.request(method, target, body=body, headers=headers or {})
            response = connection.getresponse()
            return (response.status, {k.lower(): v for k, v in response.getheaders()},
                    response.read())
        finally:
            connection.close()

    def raw(self, data, wait=5.0):
        """Sends raw bytes; everything the host sends back until it closes or `wait` ends."""
        with socket.create_connection(("127.0.0.1", self.port), timeout=wait) as connection:
            connection.sendall(data)
            received = b""
            try:
                while chunk := connection.recv(65536):
                    received += chunk
            except socket.timeout:
                pass
            return received


def vsmctl_answers(commands, origin="http://127.0.0.1", url="/vsm/"):
    """The answers vsmctl prints for `commands`, sent in order in one process, as bytes."""
    folder = folder_with("VSMCTL")
    try:
        output = subprocess.run([os.path.join(folder, "vsmctl"), "--origin", origin, "--url", url,
                                 *commands], cwd=folder, check=True, capture_output=True,
                                timeout=60).stdout
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    answers, position = [], 0
    while match := re.compile(rb"--- answer \((\d+) bytes\)\n").search(output, position):
        position = match.end() + int(match.group(1))
        answers.append(output[match.end():position])
    return answers


def artifact(name):
    os.makedirs(ENV["VSM_ARTIFACTS"], exist_ok=True)
    return os.path.join(ENV["VSM_ARTIFACTS"], name)


def wait_until(predicate, seconds=10.0):
    deadline = time.monotonic() + seconds
    while not predicate():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.05)
    return True
