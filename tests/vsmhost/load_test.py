"""Load on vsmhost: 8 WebSocket and 8 HTTP keep-alive clients send distinct commands for 10 s
(--seconds N; --long or VSM_LOAD_LONG=1: 60 s). Every answer must be vsmctl's answer to that very command:
none lost, mismatched or crossed. Prints commands/s, p50/p99 latency and vsmctl's cost per
command in one process; the figures also go to artifacts/vsmhost-load.json."""
import asyncio
import json
import os
import shutil
import subprocess
import sys
import time

import websockets

from hostlib import Host, artifact, folder_with, vsmctl_answers

TEMPLATE = '{"id":"@I","cmdId":"@C","method":"ChangePort","parameter":["@P"]}'


def fill(text, client, number):
    return text.replace("@I", "c%d" % client).replace("@C", str(number)).replace(
        "@P", "p%d-%d" % (client, number))


async def client(port, index, answer, deadline, result):
    """One client, WebSocket for indexes below 8, HTTP keep-alive above."""
    if index < 8:
        ws = await websockets.connect("ws://127.0.0.1:%d/vsm/ws" % port, compression=None)
    else:
        reader, writer = await asyncio.open_connection("127.0.0.1", port)
    number = 0
    while time.monotonic() < deadline:
        number += 1
        command = fill(TEMPLATE, index, number).encode()
        started = time.perf_counter()
        if index < 8:
            await ws.send(command.decode())
            got = (await asyncio.wait_for(ws.recv(), 30)).encode()
        else:
            writer.write(b"POST /vsm/ HTTP/1.1\r\nContent-Length: %d\r\n\r\n%s"
                         % (len(command), command))
            head = await asyncio.wait_for(reader.readuntil(b"\r\n\r\n"), 30)
            length = int(head.lower().split(b"content-length:")[1].split(b"\r\n")[0])
            got = await reader.readexactly(length) if head.startswith(b"HTTP/1.1 200 ") else b""
        result["latencies"].append(time.perf_counter() - started)
        result["mismatched"] += got != fill(answer, index, number).encode()
    await ws.close() if index < 8 else writer.close()


async def load(port, seconds, answer):
    results = [{"mismatched": 0, "latencies": []} for _ in range(16)]
    started = time.monotonic()
    errors = await asyncio.gather(*[client(port, i, answer, started + seconds, results[i])
                                    for i in range(16)], return_exceptions=True)
    return results, time.monotonic() - started, [repr(e) for e in errors if e is not None]


def vsmctl_seconds_per_command(count=20000):
    folder = folder_with("VSMCTL")
    try:
        def run(lines):
            started = time.perf_counter()
            subprocess.run([folder + "/vsmctl"], input=lines, cwd=folder, capture_output=True,
                           check=True, timeout=300)
            return time.perf_counter() - started
        lines = "".join(fill(TEMPLATE, 0, n) + "\n" for n in range(count)).encode()
        return (run(lines) - run(b"")) / count  # less the start and stop of the process
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def main():
    long_run = "--long" in sys.argv or os.environ.get("VSM_LOAD_LONG") == "1"
    seconds = 60 if long_run else float(sys.argv[sys.argv.index("--seconds") + 1]) \
        if "--seconds" in sys.argv else 10
    answer = vsmctl_answers([TEMPLATE])[0].decode()
    with Host() as host:
        results, elapsed, errors = asyncio.run(load(host.port, seconds, answer))
        host_exit = host.stop()
    latencies = sorted(l for r in results for l in r["latencies"])
    direct = vsmctl_seconds_per_command()
    figures = {
        "seconds": round(elapsed, 1), "commands": len(latencies),
        "commands_per_second": round(len(latencies) / elapsed),
        "p50_ms": round(latencies[len(latencies) // 2] * 1e3, 3),
        "p99_ms": round(latencies[len(latencies) * 99 // 100] * 1e3, 3),
        "vsmctl_us_per_command": round(direct * 1e6, 1),
        "host_us_per_command": round(elapsed / len(latencies) * 1e6, 1),
        "mismatched": sum(r["mismatched"] for r in results), "client_errors": errors,
        "idle_clients": sum(not r["latencies"] for r in results), "host_exit": host_exit}
    print(json.dumps(figures, indent=1))
    with open(artifact("vsmhost-load.json"), "w") as file:
        json.dump(figures, file, indent=1)
    return 0 if (figures["mismatched"], errors, figures["idle_clients"], host_exit) == (
        0, [], 0, 0) else 1


if __name__ == "__main__":
    sys.exit(main())
