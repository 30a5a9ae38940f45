// The demo page: reads the host's status, opens the module's WebSocket, runs a short
// conversation and lets the user send any command. Answers are shown exactly as they arrive:
// textContent keeps every byte, tabs and line feeds included.
"use strict";

const conversation = [
  {id: "1", cmdId: "1", method: "VersionInfo", parameter: []},
  {id: "2", cmdId: "2", method: "GetServerInfo", parameter: []},
  {id: "3", cmdId: "3", method: "ChangePort", parameter: ["a"]},
  {id: "4", cmdId: "4", method: "CheckQPTPort", parameter: ["127.0.0.1", 18625, 18626]},
];

const $ = (id) => document.getElementById(id);
const byteLength = (text) => new TextEncoder().encode(text).length;

function setState(state) { document.body.dataset.state = state; }

function showConnection(text, cls) {
  $("connection").textContent = text;
  $("connection").className = cls;
}

// One socket, answers in the order of the commands: each send waits for the next message.
class ModuleSocket {
  constructor(url) {
    this.waiting = [];
    this.socket = new WebSocket(url);
    this.socket.binaryType = "arraybuffer";
    this.opened = new Promise((resolve, reject) => {
      this.socket.onopen = resolve;
      this.socket.onerror = () => reject(new Error("the WebSocket failed"));
    });
    this.socket.onmessage = (event) => {
      const next = this.waiting.shift();
      if (next) next(typeof event.data === "string" ? event.data : "(binary, " + event.data.byteLength + " bytes)");
    };
    this.socket.onclose = () => showConnection("closed", "closed");
  }
  send(text) {
    return new Promise((resolve) => {
      this.waiting.push(resolve);
      this.socket.send(text);
    });
  }
}

function addExchange(command, answer) {
  const item = document.createElement("li");
  item.dataset.method = command.method;
  const title = document.createElement("div");
  title.className = "method";
  title.textContent = command.method + " (" + byteLength(answer) + " bytes)";
  const sent = document.createElement("pre");
  sent.className = "sent";
  sent.textContent = JSON.stringify(command);
  const received = document.createElement("pre");
  received.className = "answer";
  received.textContent = answer;
  item.append(title, sent, received);
  $("conversation").append(item);
}

async function refreshStatus(alias) {
  const status = await (await fetch("/status")).json();
  const module = status.modules.find((m) => m.alias === alias) || status.modules[0];
  $("wait").textContent = String(module.waitTimeout);
  return module;
}

async function main() {
  const status = await (await fetch("/status")).json();
  const wanted = new URLSearchParams(location.search).get("alias");
  const module = status.modules.find((m) => m.alias === wanted) || status.modules[0];
  $("alias").textContent = module.alias;
  $("version").textContent = module.version;
  $("ports").textContent = module.ports.join(" ");
  $("wait").textContent = String(module.waitTimeout);

  const socket = new ModuleSocket("ws://" + location.host + "/" + module.alias + "/ws");
  await socket.opened;
  showConnection("connected to ws://" + location.host + "/" + module.alias + "/ws", "open");
  setState("talking");
  for (const command of conversation) {
    addExchange(command, await socket.send(JSON.stringify(command)));
  }
  await refreshStatus(module.alias);
  setState("done");

  $("send").addEventListener("submit", async (event) => {
    event.preventDefault();
    const answer = await socket.send($("command").value);
    $("answer-size").textContent = byteLength(answer) + " bytes";
    $("answer").textContent = answer;
  });
}

main().catch((error) => {
  showConnection(String(error), "closed");
  setState("failed");
});
