"""Load on vsmhost: 8 WebSocket and 8 HTTP keep-alive clients send commands for 10 seconds
(--long or VSM_LOAD_LONG=1: 60 seconds). Every answer must be the one vsmctl gives for that very
command: none lost, none mismatched, none crossed between clients. Prints commands per second,
p50/p99 latency, and the host's cost per command beside vsmctl's in one process; the figures
also go to artifacts/vsmhost-load.json."""
import argparse
import asyncio
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import websockets

from hostlib import ENV, Host, artifact, vsmctl_answers

TEMPLATE = '{"id":"@I","cmdId":"@C","method":"ChangePort","parameter":["@P"]}'


class Expect:
    """Each client's commands are distinct; the answer's text comes from vsmctl's answer to the
    template, with the three fields put in."""

    def __init__(self):
        self.answer = vsmctl_answers([TEMPLATE])[0].decode()

    @staticmethod
    def command(client, number):
        return TEMPLATE.replace("@I", "c%d" % client).replace("@C", str(number)).replace(
            "@P", "p%d-%d" % (client, number))

    def answer_of(self, client, number):
        return self.answer.replace("@I", "c%d" % client).replace("@C", str(number)).replace(
            "@P", "p%d-%d" % (client, number)).encode()


async def websocket_client(port, client, expect, deadline, result):
    async with websockets.connect("ws://127.0.0.1:%d/vsm/ws" % port, compression=None) as ws:
        number = 0
        while time.monotonic() < deadline:
            number += 1
            started = time.perf_counter()
            await ws.send(Expect.command(client, number))
            answer = await asyncio.wait_for(ws.recv(), 30)
            result["latencies"].append(time.perf_counter() - started)
            result["sent"] += 1
            if answer.encode() != expect.answer_of(client, number):
                result["mismatched"] += 1


async def http_client(port, client, expect, deadline, result):
    reader, writer = await asyncio.open_connection("127.0.0.1", port)
    number = 0
    try:
        while time.monotonic() < deadline:
            number += 1
            body = Expect.command(client, number).encode()
            started = time.perf_counter()
            writer.write(b"POST /vsm/ HTTP/1.1\r\nHost: l\r\nOrigin: http://127.0.0.1\r\n"
                         b"Content-Length: %d\r\n\r\n%s" % (len(body), body))
            head = await asyncio.wait_for(reader.readuntil(b"\r\n\r\n"), 30)
            length = int([line.split(b":")[1] for line in head.split(b"\r\n")
                          if line.lower().startswith(b"content-length:")][0])
            answer = await reader.readexactly(length)
            result["latencies"].append(time.perf_counter() - started)
            result["sent"] += 1
            if not head.startswith(b"HTTP/1.1 200 ") or answer != expect.answer_of(client, number):
                result["mismatched"] += 1
    finally:
        writer.close()


async def load(port, seconds, expect):
    deadline = time.monotonic() + seconds
    results = [{"sent": 0, "mismatched": 0, "latencies": []} for _ in range(16)]
    clients = [websocket_client(port, i, expect, deadline, results[i]) for i in range(8)]
    clients += [http_client(port, i, expect, deadline, results[i]) for i in range(8, 16)]
    started = time.monotonic()
    outcomes = await asyncio.gather(*clients, return_exceptions=True)
    return results, time.monotonic() - started, [o for o in outcomes if o is not None]


def vsmctl_per_command(count=20000):
    """Seconds per command when vsmctl sends `count` commands in one process."""
    folder = tempfile.mkdtemp(prefix="vsmctl-load-")
    try:
        shutil.copy(ENV["VSMCTL"], folder)
        shutil.copy(ENV["VSM_LIBRARY"], os.path.join(folder, "libvsm.so"))
        lines = "".join(Expect.command(0, n) + "\n" for n in range(count)).encode()
        run = lambda text: subprocess.run([os.path.join(folder, "vsmctl")], input=text, cwd=folder,
                                          capture_output=True, check=True, timeout=300)
        started = time.perf_counter()
        run(lines)
        full = time.perf_counter() - started
        started = time.perf_counter()
        run(b"")
        return (full - (time.perf_counter() - started)) / count
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--long", action="store_true", help="run for 60 seconds")
    arguments = parser.parse_args()
    long_run = arguments.long or os.environ.get("VSM_LOAD_LONG") == "1"
    seconds = 60 if long_run else arguments.seconds
    expect = Expect()
    with Host() as host:
        results, elapsed, errors = asyncio.run(load(host.port, seconds, expect))
        status = host.stop()
    latencies = sorted(l for r in results for l in r["latencies"])
    sent = sum(r["sent"] for r in results)
    mismatched = sum(r["mismatched"] for r in results)
    direct = vsmctl_per_command()
    p50 = latencies[len(latencies) // 2] if latencies else 0
    figures = {
        "seconds": round(elapsed, 2), "clients": "8 WebSocket + 8 HTTP keep-alive",
        "commands": sent, "commands_per_second": round(sent / elapsed, 1),
        "p50_ms": round(p50 * 1000, 3),
        "p99_ms": round(latencies[int(len(latencies) * 0.99)] * 1000, 3) if latencies else 0,
        "mean_ms": round(statistics.fmean(latencies) * 1000, 3) if latencies else 0,
        "vsmctl_us_per_command": round(direct * 1e6, 2),
        "host_over_vsmctl_p50": round(p50 / direct, 1) if direct > 0 else None,
        "mismatched": mismatched, "client_errors": [repr(e) for e in errors],
        "host_exit": status,
    }
    print(json.dumps(figures, indent=1))
    with open(artifact("vsmhost-load.json"), "w") as file:
        json.dump(figures, file, indent=1)
    ok = sent > 0 and mismatched == 0 and not errors and status == 0 and all(
        r["sent"] > 0 for r in results)
    print("OK" if ok else "FAIL")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
