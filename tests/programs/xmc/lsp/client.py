"""A client of the language server, for scripted sessions.

    with Client(PROGRAM, folder) as client:
        client.initialize(FULL)
        client.notify("textDocument/didOpen", ...)
        client.receive()

Every message of both sides goes into `transcript`, with the folder as file:///project.
"""
import json
import os
import pathlib
import re
import select
import subprocess
import time

PATIENCE = 60  # seconds that a message may take, on a machine that does much else


def frame(message):
    content = message if isinstance(message, bytes) else json.dumps(message, ensure_ascii=False).encode()
    return b"Content-Length: %d\r\n\r\n%s" % (len(content), content)


class Client:
    def __init__(self, program, folder, *arguments):
        self.folder = pathlib.Path(folder).resolve()
        self.process = subprocess.Popen([program, "lsp", *arguments], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, bufsize=0, cwd=self.folder)
        self.transcript = []
        self.last_id = 0
        self.bytes = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()

    def uri(self, name=""):
        return self.folder.as_uri() + ("/" + name if name else "")

    def record(self, side, message):
        text = json.dumps(message, ensure_ascii=False, sort_keys=True)
        text = text.replace(self.folder.as_uri(), "file:///project").replace(str(self.folder), "/project")
        self.transcript.append((side, json.loads(text)))

    # --- Sending ---

    def send_bytes(self, data):
        self.process.stdin.write(data)

    def send(self, message):
        self.record("client", message)
        self.send_bytes(frame(message))

    def notify(self, method, params=None):
        self.send({"jsonrpc": "2.0", "method": method, "params": params or {}})

    def ask(self, method, params=None):
        """Sends a request and returns its id."""
        self.last_id += 1
        message = {"jsonrpc": "2.0", "id": self.last_id, "method": method}
        if params is not None:
            message["params"] = params
        self.send(message)
        return self.last_id

    # --- Receiving ---

    def fill(self):
        ready, _, _ = select.select([self.process.stdout], [], [], PATIENCE)
        assert ready, "the server is silent"
        data = os.read(self.process.stdout.fileno(), 65536)
        self.bytes += data
        return bool(data)

    def receive(self):
        """The next message; None at the end."""
        while b"\r\n\r\n" not in self.bytes:
            if not self.fill():
                assert self.bytes == b"", self.bytes
                return None
        head, _, rest = self.bytes.partition(b"\r\n\r\n")
        size = int(re.fullmatch(rb"Content-Length: (\d+)", head).group(1))
        while len(rest) < size:
            assert self.fill(), "the last message is cut off"
            rest = self.bytes.partition(b"\r\n\r\n")[2]
        self.bytes = rest[size:]
        message = json.loads(rest[:size].decode())
        assert message["jsonrpc"] == "2.0", message
        self.record("server", message)
        return message

    def request(self, method, params=None):
        """The result or the error of a request, which must be the next message."""
        number = self.ask(method, params)
        response = self.receive()
        assert response is not None and response.get("id") == number, response
        return response["error"] if "error" in response else response["result"]

    def diagnostics(self, count=1):
        """The next messages, which must be diagnostics: (uri, diagnostics) each."""
        found = []
        for _ in range(count):
            message = self.receive()
            assert message["method"] == "textDocument/publishDiagnostics", message
            found.append((message["params"]["uri"], message["params"]["diagnostics"]))
        return found

    # --- What most sessions do ---

    def initialize(self, capabilities, with_folder=True):
        folders = [{"uri": self.uri(), "name": "project"}] if with_folder else None
        result = self.request("initialize", {"processId": None, "rootUri": None, "workspaceFolders": folders,
                                             "capabilities": capabilities})
        self.notify("initialized")
        return result

    def open(self, name, text, version=1):
        self.notify("textDocument/didOpen", {"textDocument": {
            "uri": self.uri(name), "languageId": "xmc", "version": version, "text": text}})

    def change(self, name, version, *changes):
        """Each change is a text, or (line, character, line, character, text)."""
        self.notify("textDocument/didChange", {
            "textDocument": {"uri": self.uri(name), "version": version},
            "contentChanges": [{"text": each} if isinstance(each, str) else {
                "range": span(*each[:4]), "text": each[4]} for each in changes]})

    def at(self, name, line, character):
        return {"textDocument": {"uri": self.uri(name)}, "position": {"line": line, "character": character}}

    def end(self):
        """Ends the session and returns the exit code. Nothing else may arrive."""
        assert self.request("shutdown") is None
        self.notify("exit")
        assert self.receive() is None
        return self.wait()

    def wait(self):
        return self.process.wait(PATIENCE)


def span(first_line, first_character, last_line, last_character):
    return {"start": {"line": first_line, "character": first_character},
            "end": {"line": last_line, "character": last_character}}


def quiet(client, seconds=0.2):
    """Nothing arrives for a while."""
    time.sleep(seconds)
    ready, _, _ = select.select([client.process.stdout], [], [], 0)
    assert not ready and not client.bytes, client.receive()
