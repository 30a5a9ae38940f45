"""vsmhost against vsmctl: the same commands give the same bytes over POST, GET query forms and
WebSocket; origins reach the module's guard; the browser rules, the limits and module faults."""
import asyncio
import json
import socket
import subprocess
import time
import unittest

import websockets

from hostlib import ENV, Host, vsmctl_answers, wait_until

ORIGIN = "http://127.0.0.1:18625"
# The conversation changes the module's state on the way (SetServerInfo), so order matters too.
COMMANDS = [
    '{"id":"1","cmdId":"1","method":"VSVersion","parameter":[]}',
    '{"id":"2","cmdId":"2","method":"ChangePort","parameter":["a"]}',
    '{"id":"3","cmdId":"3","method":"GetServerInfo","parameter":[]}',
    '{"id":"4","cmdId":"4","method":"SetServerInfo","parameter":["127.0.0.1",18625,18626,18622,18623]}',
    '{"id":"5","cmdId":"5","method":"GetServerInfo","parameter":[]}',
    '{"id":"6","cmdId":"6","method":"CheckQPTPort","parameter":["127.0.0.1",18622,18623]}',
    '{"id":"7","cmdId":"7","method":"SetServerInfo","parameter":["a"]}',
    '{"id":"8","cmdId":"8","method":"NoSuchMethod","parameter":[1,2.5,null]}',
    '{"id":"9","method":"ChangePort","parameter":{"a":1}}', 'not json at all', '',
    '{"id":"10","cmdId":"10","method":"ChangePort"}\r\n\r\nbody behind the blank line',
]
GUARDED = ['{"id":"1","cmdId":"1","method":"%s","parameter":[]}' % m
           for m in ("Reboot", "AddFirewall", "GetLocalIP")]


def websocket_answers(port, commands, origin=ORIGIN, path="/vsm/ws"):
    async def talk():
        async with websockets.connect("ws://127.0.0.1:%d%s" % (port, path), origin=origin or None,
                                      max_size=None) as connection:
            answers = []
            for command in commands:
                await connection.send(command)
                answer = await connection.recv()
                answers.append(answer.encode() if isinstance(answer, str) else answer)
            return answers
    return asyncio.run(talk())


class VsmHost(unittest.TestCase):
    def test_post_and_websocket_match_vsmctl(self):
        expected = vsmctl_answers(COMMANDS, origin=ORIGIN)
        for transport in ("POST", "WebSocket"):
            with Host() as host:
                if transport == "WebSocket":
                    got = websocket_answers(host.port, COMMANDS)
                else:
                    replies = [host.request("POST", "/vsm/", c, {"Origin": ORIGIN}) for c in COMMANDS]
                    self.assertEqual({(r[0], r[1]["content-type"]) for r in replies},
                                     {(200, "application/json; charset=utf-8")})
                    got = [reply[2] for reply in replies]
                self.assertEqual(got, expected, transport)

    def test_get_query_forms_match_vsmctl(self):
        rows = [("ChangePort", "id=7&p=[1,2]"), ("CheckQPTPort", 'id=x&p=["127.0.0.1",1,2]'),
                ("VSVersion", "id=a%20b"), ("GetServerInfo", "id=1&id=2&p="), ("No", "p=[1]&id=3"),
                ("ChangePort", ""), ("ChangePort", "p=[1]"), ("ChangePort", "x")]
        with Host() as host:
            for method, query in rows:
                target = "/vsm/%s?%s" % (method, query)
                command = subprocess.run([ENV["VSMKIT"], "url", "method", method, query],
                                         capture_output=True).stdout.decode()
                status, _, body = host.request("GET", target, headers={"Origin": ORIGIN})
                if command:
                    self.assertEqual((status, body),
                                     (200, vsmctl_answers([command], ORIGIN, url=target)[0]))
                else:
                    self.assertEqual((status, b'"error"' in body), (400, True), target)

    def test_origins_reach_the_guard(self):
        with Host() as host:
            for origin in ["http://127.0.0.1:8080", "https://127.0.0.1", "http://localhost",
                           "https://example.com", ""]:
                expected = vsmctl_answers(GUARDED, origin=origin)
                headers = {"Origin": origin} if origin else {}
                self.assertEqual([host.request("POST", "/vsm/", c, headers)[2] for c in GUARDED],
                                 expected, origin)
                self.assertEqual(websocket_answers(host.port, GUARDED, origin), expected, origin)

    def test_cors_preflight_status_and_page(self):
        with Host() as host:
            asked = {"Origin": "https://e.com", "Access-Control-Request-Method": "POST",
                     "Access-Control-Request-Headers": "content-type",
                     "Access-Control-Request-Private-Network": "true"}
            for sent, allowed in [(asked, ("https://e.com", "content-type", "true")),
                                  ({"Access-Control-Request-Method": "POST"}, ("*", None, None))]:
                status, headers, _ = host.request("OPTIONS", "/vsm/", headers=sent)
                self.assertEqual((status, headers["access-control-allow-methods"]),
                                 (204, "GET, POST, OPTIONS"))
                self.assertEqual(tuple(headers.get("access-control-allow-" + name) for name in
                                       ("origin", "headers", "private-network")), allowed)
            _, headers, _ = host.request("POST", "/vsm/", "{}", {"Origin": "http://a.b"})
            self.assertEqual(headers["access-control-allow-origin"], "http://a.b")
            status = lambda: json.loads(host.request("GET", "/status")[2])["modules"][0]
            self.assertEqual({k: status()[k] for k in ("alias", "version", "ports")},
                             {"alias": "vsm", "version": "qwasm2_16261212", "ports": [18625, 18626]})
            self.assertTrue(wait_until(lambda: status()["waitTimeout"] in (1, 100)))
            for method, target, code, kind in [
                    ("GET", "/", 200, "text/html"), ("GET", "/app.js", 200, "text/javascript"),
                    ("GET", "/../CMakeLists.txt", 404, "application/json"),
                    ("GET", "/nothing", 404, "application/json"),
                    ("PUT", "/vsm/", 405, "application/json")]:
                got, headers, _ = host.request(method, target)
                self.assertEqual((got, headers["content-type"].split(";")[0]), (code, kind), target)
            self.assertEqual(host.stop(), 0)

    def test_limits(self):
        with Host() as host:
            self.assertRegex(host.raw(b"POST /vsm/ HTTP/1.1\r\nContent-Length: %d\r\n\r\n"
                                      % (16 * 1024 * 1024 + 1)), b"^HTTP/1.1 413 ")
            command = b'{"id":"1","cmdId":"1","method":"ChangePort","parameter":["a"]}'
            big = command + b" " * (16 * 1024 * 1024 - len(command))
            self.assertEqual(host.request("POST", "/vsm/", big)[::2],
                             (200, vsmctl_answers([command.decode()])[0]))
            for garbage in [b"GARBAGE\r\n\r\n", b"GET / HTTP/9.Z\r\n\r\n",
                            b"POST /vsm/ HTTP/1.1\r\nContent-Length: x\r\n\r\n",
                            b"GET / HTTP/1.1\r\nBad Header\r\n\r\n"]:
                self.assertRegex(host.raw(garbage), b"^HTTP/1.1 400 ", garbage)
        with Host("--idle-timeout", "1", "--max-connections", "4") as host:
            started = time.monotonic()  # idle connections close, over HTTP and WebSocket
            self.assertEqual(host.raw(b"", wait=10), b"")
            self.assertLess(time.monotonic() - started, 5)

            async def idle_websocket():
                async with websockets.connect("ws://127.0.0.1:%d/vsm/ws" % host.port) as ws:
                    with self.assertRaises(websockets.ConnectionClosed):
                        await asyncio.wait_for(ws.recv(), 10)
            asyncio.run(idle_websocket())
            # Four connections fill the cap, a fifth is turned away, a freed place is taken again.
            held = [socket.create_connection(("127.0.0.1", host.port)) for _ in range(4)]
            time.sleep(0.2)
            status = b"GET /status HTTP/1.1\r\nConnection: close\r\n\r\n"
            self.assertRegex(host.raw(status), b"^HTTP/1.1 503 ")
            held.pop().close()
            self.assertTrue(wait_until(lambda: host.raw(status).startswith(b"HTTP/1.1 200 ")))
            for connection in held:
                connection.close()
            self.assertEqual(host.stop(), 0)

    def test_modules_side_by_side_and_their_faults(self):
        with Host(modules=[ENV["VSM_FAKE_MODULE"], "./libvsm.so"]) as host:
            body = host.request("POST", "/fak/x?y=1", "hello", {"Origin": "http://o"})[2]
            fields = dict(line.split("=", 1) for line in body.decode().split("\n"))
            self.assertEqual(fields, dict(fields, url="/fak/x?y=1", origin="http://o", socket="yes",
                                          text="hello", supported="1"))
            self.assertNotEqual(fields["key"], "0")
            self.assertEqual(host.request("POST", "/vsm/", COMMANDS[1])[2],
                             vsmctl_answers([COMMANDS[1]])[0])
            status, _, body = host.request("POST", "/fak/", "silent")
            self.assertEqual((status, json.loads(body)),
                             (502, {"error": "the module gave no answer", "module": "fak"}))
            _, headers, body = host.request("POST", "/fak/", "binary")
            mark = b"--" + headers["content-type"].split("boundary=")[1].encode()
            self.assertEqual(body, mark + b"\r\nContent-Type: application/json; charset=utf-8\r\n"
                             b"\r\n{\"binary\":true}\r\n" + mark + b"\r\nContent-Type: application/"
                             b"octet-stream\r\n\r\n\x00\x01\xffB\r\n" + mark + b"--\r\n")

            async def talk():  # binary blocks and non-UTF-8 answers travel as binary messages
                async with websockets.connect("ws://127.0.0.1:%d/fak/ws" % host.port) as ws:
                    answers = []
                    for text, count in [("silent", 1), ("binary", 2), ("latin", 1), ("hi", 1)]:
                        await ws.send(text)
                        answers += [await ws.recv() for _ in range(count)]
                    return answers
            silent, text, block, latin, hi = asyncio.run(talk())
            self.assertEqual((json.loads(silent)["error"], text, block, latin),
                             ("the module gave no answer", '{"binary":true}', b"\0\1\377B", b"caf\xe9"))
            key = hi.split("key=")[1].split("\n")[0]
            self.assertTrue(wait_until(
                lambda: host.request("POST", "/fak/", "closed")[2] == (key + " ").encode()))
            self.assertEqual(host.stop(), 0)
            with open(host.folder + "/fake_actions.log") as file:
                lines = file.read().splitlines()
            self.assertEqual((lines[:2], lines[-1]), (["action 0", "close " + key], "action 3"))
        for arguments, status in [(["--module", "/nonexistent.so"], 1), (["--port", "70000"], 2),
                                  (["--module", ENV["VSM_FAKE_MODULE"]] * 2, 1), (["--bogus"], 2)]:
            self.assertEqual(subprocess.run([ENV["VSMHOST"], "--port", "0", *arguments],
                                            capture_output=True, timeout=30).returncode, status)


if __name__ == "__main__":
    unittest.main()
