"""Shared pieces of the vsmhost tests: a host started in a folder of its own, plain HTTP
requests, and the answers vsmctl gets for the same commands.

Paths come from the environment, set by CTest: VSMHOST, VSM_LIBRARY, VSMCTL, VSMKIT, VSM_PAGE,
VSM_FAKE_MODULE and VSM_ARTIFACTS (where tests leave what a person may want to look at)."""
import http.client
import os
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import time

ENV = os.environ


class Host:
    """vsmhost copied with the module and the page into a fresh folder (the module keeps its
    configuration and log beside the program), started on a free port."""

    def __init__(self, *arguments, modules=None):
        self.folder = tempfile.mkdtemp(prefix="vsmhost-test-")
        shutil.copy(ENV["VSMHOST"], self.folder)
        shutil.copy(ENV["VSM_LIBRARY"], os.path.join(self.folder, "libvsm.so"))
        shutil.copytree(ENV["VSM_PAGE"], os.path.join(self.folder, "page"))
        command = [os.path.join(self.folder, "vsmhost"), "--port", "0", *arguments]
        for module in modules or []:
            command += ["--module", module]
        self.stderr = open(os.path.join(self.folder, "stderr.txt"), "wb")
        self.process = subprocess.Popen(command, cwd=self.folder, stdout=subprocess.PIPE,
                                        stderr=self.stderr)
        ready, _, _ = select.select([self.process.stdout], [], [], 30)
        line = self.process.stdout.readline().decode() if ready else ""
        match = re.fullmatch(r"listening on http://127\.0\.0\.1:(\d+)\n", line)
        if not match:
            self.stop()
            raise RuntimeError("vsmhost did not start: %r %s" % (line, self.errors()))
        self.port = int(match.group(1))

    def errors(self):
        with open(os.path.join(self.folder, "stderr.txt"), "rb") as file:
            return file.read().decode(errors="replace")

    def stop(self):
        """SIGTERM, then the exit status (a clean stop is 0)."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        try:
            status = self.process.wait(30)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
        self.process.stdout.close()
        self.stderr.close()
        return status

    def close(self):
        self.stop()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    def request(self, method, target, body=None, headers=None):
        """(status, headers as a dict with lower-case names, body bytes), on a new connection."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        try:
            connection.request(method, target, body=body, headers=headers or {})
            response = connection.getresponse()
            return (response.status, {k.lower(): v for k, v in response.getheaders()},
                    response.read())
        finally:
            connection.close()

    def raw(self, data, wait=5.0):
        """Sends raw bytes and returns all the host answers until it closes (or `wait` ends)."""
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
    folder = tempfile.mkdtemp(prefix="vsmctl-test-")
    try:
        shutil.copy(ENV["VSMCTL"], folder)
        shutil.copy(ENV["VSM_LIBRARY"], os.path.join(folder, "libvsm.so"))
        output = subprocess.run(
            [os.path.join(folder, "vsmctl"), "--origin", origin, "--url", url, *commands],
            cwd=folder, check=True, capture_output=True, timeout=60).stdout
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    answers, position = [], 0
    while (match := re.compile(rb"--- answer \((\d+) bytes\)\n").search(output, position)):
        start = match.end()
        answers.append(output[start:start + int(match.group(1))])
        position = start + int(match.group(1))
    return answers


def vsmkit_url(*arguments):
    return subprocess.run([ENV["VSMKIT"], "url", *arguments], capture_output=True,
                          timeout=30).stdout.decode()


def artifact(name):
    folder = ENV.get("VSM_ARTIFACTS", tempfile.gettempdir())
    os.makedirs(folder, exist_ok=True)
    return os.path.join(folder, name)


def wait_until(predicate, seconds=10.0):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if predicate():
            return True
        time.sleep(0.05)
    return predicate()
