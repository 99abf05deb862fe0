#!/usr/bin/env python3
"""Whole sessions with the language server: sessions_test.py PROGRAM GOLDEN [NAME...]

A session is a function below. GOLDEN/NAME.txt has every message of both sides in order, one to a line;
with TOVA_UPDATE_GOLDEN in the environment it is written. Sessions that compare by themselves have no
such file.
"""
import json
import os
import pathlib
import random
import sys
import tempfile

from client import Client, frame, quiet, span

PROGRAM = os.path.abspath(sys.argv[1])
GOLDEN = pathlib.Path(sys.argv[2])

FULL = {
    "general": {"positionEncodings": ["utf-16"]},
    "textDocument": {
        "completion": {"completionItem": {"snippetSupport": True}},
        "hover": {"contentFormat": ["markdown", "plaintext"]},
        "documentSymbol": {"hierarchicalDocumentSymbolSupport": True},
        "publishDiagnostics": {"relatedInformation": True, "tagSupport": {"valueSet": [1, 2]}},
        "codeAction": {"codeActionLiteralSupport": {"codeActionKind": {"valueSet": []}}},
    },
    "workspace": {
        "workspaceEdit": {"documentChanges": True},
        "didChangeWatchedFiles": {"dynamicRegistration": True},
    },
}

HEAD = '<?xml version="1.0" encoding="UTF-8"?>\n<xmc version="1.1">\n'

ENGLISH = HEAD + """  <catalog name="app" lang="en">
    <msg name="hello" meta="Shown once, at the start">Hello <arg name="who"/>!</msg>
    <msg name="copied"><arg name="n" type="int" base="spaced_dec"/> files copied to <arg name="folder"/>.</msg>
    <msg name="quit">Quit</msg>
  </catalog>
</xmc>
"""

GERMAN = HEAD + """  <catalog name="app" lang="de-AT">
    <msg name="hello">Servus <arg name="who"/>!</msg>
    <msg name="copied"><arg name="n" type="int" bas="hex"/> Dateien nach <arg name="ordner"/> kopiert.</msg>
  </catalog>
</xmc>
"""


def project(folder):
    (folder / "en.xmc").write_text(ENGLISH)
    (folder / "de.xmc").write_text(GERMAN)


def complete(client, name, version, text, count=1):
    """Sets the document to the text without its "|", which changes the diagnostics of `count` files, and asks
    for completions there."""
    before = text[:text.index("|")]
    client.change(name, version, text.replace("|", "", 1))
    client.diagnostics(count)
    line = before.count("\n")
    return client.request("textDocument/completion", client.at(name, line, len(before) - before.rfind("\n") - 1))


# --- Sessions with a golden file ---

def editing(folder):
    """An editor that can do everything corrects a translation."""
    project(folder)
    with Client(PROGRAM, folder) as client:
        client.initialize(FULL)
        registration = client.receive()
        client.send({"jsonrpc": "2.0", "id": registration["id"], "result": None})
        client.diagnostics()  # of the file on the disk, which is not open
        client.open("de.xmc", GERMAN)
        client.diagnostics()
        client.request("textDocument/hover", client.at("de.xmc", 4, 50))
        client.request("textDocument/definition", client.at("de.xmc", 4, 50))
        client.request("textDocument/definition", client.at("de.xmc", 3, 16))
        client.request("textDocument/references",
                       {**client.at("de.xmc", 3, 16), "context": {"includeDeclaration": True}})
        client.request("textDocument/documentSymbol", {"textDocument": {"uri": client.uri("de.xmc")}})
        client.request("textDocument/codeAction",
                       {"textDocument": {"uri": client.uri("de.xmc")}, "range": span(4, 49, 4, 50),
                        "context": {"diagnostics": []}})
        client.request("textDocument/codeAction",
                       {"textDocument": {"uri": client.uri("de.xmc")}, "range": span(0, 0, 0, 0),
                        "context": {"diagnostics": [], "only": ["source.fixAll"]}})
        # Two changes at once; the second one counts on the first.
        client.change("de.xmc", 2, (2, 28, 2, 33, "de"), (4, 84, 4, 90, "folder"))
        client.diagnostics()
        client.change("de.xmc", 3, (4, 48, 4, 51, "base"))
        assert client.diagnostics() == [(client.uri("de.xmc"), [])]
        client.request("textDocument/formatting", {"textDocument": {"uri": client.uri("de.xmc")},
                                                   "options": {"tabSize": 2, "insertSpaces": True}})
        # What is not saved counts: the other file has another argument now.
        client.open("en.xmc", ENGLISH.replace('"who"', '"name"'))
        client.diagnostics(2)
        # It is not saved, so closing it brings the old text back.
        client.notify("textDocument/didClose", {"textDocument": {"uri": client.uri("en.xmc")}})
        client.diagnostics()
        (folder / "en.xmc").write_text(ENGLISH.replace(">Quit<", '><arg name="new"/><'))
        client.notify("workspace/didChangeWatchedFiles",
                      {"changes": [{"uri": client.uri("en.xmc"), "type": 2}]})
        quiet(client)  # de.xmc has no such message
        assert client.end() == 0


def plain(folder):
    """The least that a client can do."""
    project(folder)
    with Client(PROGRAM, folder) as client:
        client.initialize({})
        client.diagnostics()
        client.open("de.xmc", GERMAN)
        client.diagnostics()
        client.request("textDocument/hover", client.at("de.xmc", 4, 50))
        client.request("textDocument/hover", client.at("de.xmc", 0, 0))
        client.request("textDocument/documentSymbol", {"textDocument": {"uri": client.uri("de.xmc")}})
        client.request("textDocument/codeAction",
                       {"textDocument": {"uri": client.uri("de.xmc")}, "range": span(0, 0, 9, 0),
                        "context": {"diagnostics": []}})
        complete(client, "de.xmc", 2, HEAD + "<|")
        assert client.end() == 0


def completion(folder):
    """Everything that completion knows."""
    project(folder)
    (folder / "words.part").write_text(HEAD + "</xmc>\n")
    head = HEAD + '  <catalog name="app" lang="de">\n'
    with Client(PROGRAM, folder) as client:
        client.initialize(FULL)
        client.receive()
        client.diagnostics()
        client.open("new.xmc", "")
        client.diagnostics()
        cases = [
            "|",
            "<|",
            HEAD + "<|",
            HEAD + '<include file="|"/>',
            HEAD + "<catalog |>",
            HEAD + '<catalog name="|" lang="fr">',
            HEAD + '<catalog name="app" lang="|"',
            head + "<|",
            head + "<ms|g name=\"a\">",
            head + "<msg |>",
            head + '<msg name="|"></msg>',
            head + '<msg name="copied"><|</msg>',
            head + '<msg name="copied"><arg name="n"/><arg name="|',
            head + '<msg name="copied"><arg |/></msg>',
            head + '<msg name="copied"><arg name="n" type="memory" |/></msg>',
            head + '<msg name="copied"><arg name="n" type="|"/></msg>',
            head + '<msg name="copied"><arg name="n" type="memory" target_unit=\'|\'/></msg>',
            head + '<msg name="copied"><arg name="n" type="int" ba|="hex"/></msg>',
            head + '<msg name="copied">text </|',
            head + '<msg name="copied">text |',
            head + '<msg name="copied"><!-- <| -->',
            head + '<strange |>',
        ]
        for version, case in enumerate(cases, 2):
            complete(client, "new.xmc", version, case)
        assert client.end() == 0


def includes(folder):
    """Included files, and files that other programs own."""
    (folder / "app.xmc").write_text(HEAD + '<include file="words.part"/>\n<include file="gone.part"/>\n</xmc>\n')
    (folder / "words.part").write_text(HEAD + '<catalog name="a" lang="en"><msg name="b">c</msg></catalog>\n</xmc>\n')
    (folder / "build.xml").write_text("<project/>\n")
    (folder / "link.xmc").symlink_to("app.xmc")
    with Client(PROGRAM, folder) as client:
        client.initialize(FULL)
        client.receive()
        client.diagnostics(2)
        client.request("textDocument/definition", client.at("app.xmc", 2, 18))
        client.request("textDocument/definition", client.at("app.xmc", 3, 18))
        client.open("words.part", HEAD + "<catalog\n</xmc>\n")
        client.diagnostics(2)
        client.open("gone.part", HEAD + '<catalog name="a" lang="en"><msg name="d">e</msg></catalog>\n</xmc>\n')
        client.diagnostics(2)
        client.open("build.xml", "<project/>\n")  # no catalog, so it has no findings
        client.diagnostics()
        client.notify("workspace/didChangeWorkspaceFolders",
                      {"event": {"added": [], "removed": [{"uri": client.uri(), "name": "project"}]}})
        client.diagnostics(2)
        assert client.end() == 0


def options(folder):
    """Another reference, some rules, one of two folders, and the explanations of rules."""
    for name in ("po", "old"):
        (folder / name).mkdir()
        project(folder / name)
    capabilities = {"textDocument": {**FULL["textDocument"],
                                     "publishDiagnostics": {"dataSupport": True}}}
    with Client(PROGRAM, folder, "--stdio", "--reference", "de-AT", "--ignore", "lang-separator", "po") as client:
        client.initialize(capabilities)
        client.diagnostics(2)  # of po only
        client.open("po/de.xmc", GERMAN)
        client.diagnostics()
        client.request("textDocument/codeAction",
                       {"textDocument": {"uri": client.uri("po/de.xmc")}, "range": span(0, 0, 9, 0),
                        "context": {"diagnostics": [], "only": ["quickfix"]}})
        client.request("textDocument/definition", client.at("po/en.xmc", 3, 16))
        complete(client, "po/de.xmc", 2, HEAD + '<catalog name="app" lang="fr"><|', 2)
        assert client.end() == 0


def unsaved(folder):
    """A document that is no file yet is checked by itself."""
    (folder / "words.part").write_text(HEAD + "</xmc>\n")
    uri = "untitled:Untitled-1"
    with Client(PROGRAM, folder) as client:
        client.initialize(FULL, with_folder=False)
        client.receive()
        text = GERMAN.replace("<catalog", '<include file="words.part"/> <catalog', 1)
        client.notify("textDocument/didOpen", {"textDocument": {
            "uri": uri, "languageId": "xmc", "version": 1, "text": text}})
        client.diagnostics()
        client.request("textDocument/hover", {"textDocument": {"uri": uri}, "position": {"line": 3, "character": 9}})
        # It has no folder from which an include could start.
        place = {"textDocument": {"uri": uri}, "position": {"line": 2, "character": 18}}
        assert client.request("textDocument/definition", place) == []
        assert client.request("textDocument/completion", place)["items"] == []
        client.notify("textDocument/didClose", {"textDocument": {"uri": uri}})
        assert client.diagnostics() == [(uri, [])]
        assert client.end() == 0


def errors(folder):
    """Whatever a client does wrong, the server says so and goes on."""
    with Client(PROGRAM, folder) as client:
        assert client.request("textDocument/hover", {})["code"] == -32002
        client.notify("textDocument/didOpen", {})  # dropped
        assert client.request("initialize", [])["code"] == -32602
        client.initialize({})
        assert client.request("initialize", {})["code"] == -32600
        assert client.request("no/such/method")["code"] == -32601
        client.notify("no/such/notification")
        client.notify("$/setTrace", {"value": "off"})
        assert client.request("textDocument/hover")["code"] == -32602
        assert client.request("textDocument/hover", {"textDocument": 5})["code"] == -32602
        assert client.request("textDocument/hover", client.at("gone.xmc", 0, 0))["code"] == -32602
        client.open("a.xmc", HEAD)
        client.diagnostics()
        for wrong in (-1, 1.5, "0", None):
            assert client.request("textDocument/hover", client.at("a.xmc", wrong, 0))["code"] == -32602
        assert client.request("textDocument/hover", client.at("a.xmc", 2**63, 2**63)) is None
        assert client.request("textDocument/formatting",
                              {"textDocument": {"uri": client.uri("a.xmc")}})["code"] == -32803
        for notification, params in (("textDocument/didChange", {}),
                                     ("textDocument/didChange", {"textDocument": {"uri": "file:///b", "version": 2}}),
                                     ("textDocument/didOpen", {"textDocument": {"uri": 5}}),
                                     ("textDocument/didClose", None)):
            client.notify(notification, params)
            assert client.receive()["method"] == "window/logMessage"
        for content in (b"{", b"", b"\xff", b'"\xed\xa0\x80"', b'{"a": "\\ud800"}', b"nul"):
            client.send_bytes(frame(content))
            response = client.receive()
            assert response["error"]["code"] == -32700 and response["id"] is None
        for content in (b"[]", b"5", b"{}", b'{"id": 1}', b'{"jsonrpc": "1.0", "id": 7, "method": "x"}',
                        b'{"jsonrpc": "2.0", "id": null, "method": "x"}',
                        b'{"jsonrpc": "2.0", "id": [], "method": "x"}',
                        b'{"jsonrpc": "2.0", "id": 8, "method": 5}',
                        b'[{"jsonrpc": "2.0", "id": 9, "method": "shutdown"}]'):
            client.send_bytes(frame(content))
            assert client.receive()["error"]["code"] == -32600
        for content in (b"garbage\r\n", b"Content-Length: x\r\n\r\n", b"\r\n", b"Content-Length: 1000000000\r\n\r\n"):
            client.send_bytes(content)
            assert client.receive()["error"]["code"] == -32700
            assert client.request("after/it")["code"] == -32601
        assert client.request("shutdown") is None
        assert client.request("textDocument/hover", client.at("a.xmc", 0, 0))["code"] == -32600
        client.notify("textDocument/didOpen", {})
        client.notify("exit")
        assert client.receive() is None
        assert client.wait() == 0
    return client


# --- Sessions that compare by themselves ---

def cancelling(folder):
    """What is not handled yet can be cancelled; anything else is ignored."""
    with Client(PROGRAM, folder) as client:
        client.initialize({})
        client.open("a.xmc", ENGLISH)
        client.diagnostics()
        place = client.at("a.xmc", 3, 60)
        # In one piece of less than a pipe's buffer, so that the server reads them together.
        client.send_bytes(b"".join(frame(message) for message in (
            {"jsonrpc": "2.0", "id": 1001, "method": "textDocument/hover", "params": place},
            {"jsonrpc": "2.0", "id": "1001", "method": "textDocument/hover", "params": place},
            {"jsonrpc": "2.0", "method": "$/cancelRequest", "params": {"id": 1001}},
            {"jsonrpc": "2.0", "method": "$/cancelRequest", "params": {"id": 5}},
            {"jsonrpc": "2.0", "method": "$/cancelRequest", "params": []},
            {"jsonrpc": "2.0", "method": "$/cancelRequest"})))
        assert client.receive()["error"]["code"] == -32800
        assert client.receive()["id"] == "1001"
        assert client.end() == 0


def ends(folder):
    """The exit code is 0 after a shutdown only."""
    with Client(PROGRAM, folder) as client:
        client.initialize({})
        client.notify("exit")
        assert client.receive() is None and client.wait() == 1
    with Client(PROGRAM, folder) as client:
        client.process.stdin.close()
        assert client.receive() is None and client.wait() == 1
    with Client(PROGRAM, folder) as client:
        client.initialize({})
        # The last requests are answered, although nothing more can come.
        client.ask("textDocument/hover", client.at("gone", 0, 0))
        client.ask("shutdown")
        client.process.stdin.close()
        assert client.receive()["error"] and client.receive()["result"] is None
        assert client.receive() is None and client.wait() == 0
    with Client(PROGRAM, folder) as client:
        client.process.stdout.close()
        client.initialize_quietly = client.ask("initialize", {"capabilities": {}})
        assert client.wait() == 1


def encodings(folder):
    """Positions behind characters of one to four bytes, in lines that end in CRLF."""
    text = HEAD.replace("\n", "\r\n") + '<!-- \u00e4\u20ac\U0001f600 --> <catalog name="a" lang="de-AT"/>\r\n</xmc>'
    for offered, encoding, column in (([], "utf-16", 38), (["utf-32"], "utf-16", 38),
                                      (["utf-16", "utf-8"], "utf-8", 43)):
        with Client(PROGRAM, folder) as client:
            result = client.initialize({**FULL, "general": {"positionEncodings": offered}})
            assert result["capabilities"]["positionEncoding"] == encoding
            client.receive()
            client.open("a.xmc", text)
            found = {each["code"]: each["range"] for each in client.diagnostics()[0][1]}
            assert found["lang-separator"] == span(2, column, 2, column + 5), found
            # An end after the line's end is the line's end, not within CRLF.
            client.change("a.xmc", 2, (2, column, 2, column + 5, "de"), (2, 500, 2, 1000, "<!-- x -->"))
            codes = [each["code"] for each in client.diagnostics()[0][1]]
            assert codes == ["crlf"], codes
            symbols = client.request("textDocument/documentSymbol",
                                     {"textDocument": {"uri": client.uri("a.xmc")}})
            assert symbols[0]["detail"] == "de"
            edits = client.request("textDocument/formatting", {"textDocument": {"uri": client.uri("a.xmc")}})
            assert "<!-- \u00e4\u20ac\U0001f600 -->" in edits[0]["newText"]
            assert client.end() == 0


def cut_frames(folder):
    """A frame that is cut anywhere is read all the same."""
    with Client(PROGRAM, folder) as client:
        client.initialize({})
        for number in range(1, 200):
            request = frame({"jsonrpc": "2.0", "id": number, "method": "no/\u00e4"})
            if number > len(request):
                break
            client.send_bytes(request[:number])
            if number % 10 == 0:
                quiet(client, 0.01)
            client.send_bytes(request[number:])
            response = client.receive()
            assert response["id"] == number and response["error"]["code"] == -32601
        else:
            raise AssertionError("the request is longer than the loop")
        assert client.end() == 0


def utf16_length(text):
    return len(text.encode("utf-16-le")) // 2


def place_of(text, index):
    line_begin = text.rfind("\n", 0, index) + 1
    return text.count("\n", 0, index), utf16_length(text[line_begin:index])


def edited(client, name, version, text, random_source, begin, end, alphabet):
    """Sends one random edit between two indices, and returns the new text and end."""
    first = random_source.randint(begin, end)
    last = min(end, first + random_source.choice((0, 0, 1, 2, 5, 40)))
    fresh = "".join(random_source.choice(alphabet) for _ in range(random_source.randint(0, 6)))
    client.change(name, version, (*place_of(text, first), *place_of(text, last), fresh))
    return text[:first] + fresh + text[last:], end + len(fresh) - (last - first)


def latest(client, version):
    """The diagnostics of that version; older ones may come before."""
    while True:
        message = client.receive()
        if message["params"].get("version") == version:
            return message["params"]["diagnostics"]


def random_content(folder):
    """After 1,000 edits of a section the server shows exactly the client's text."""
    source = random.Random(5)
    head = HEAD + '<catalog name="a" lang="en"><msg name="b"><![CDATA['
    tail = "]]></msg></catalog></xmc>\n"
    text, end = head + tail, len(head)
    alphabet = ["a", "z", " ", "<", "&", "\n", "\u00e4", "\u20ac", "\U0001f600", "e\u0301", "msg", '"']
    with Client(PROGRAM, folder) as client:
        client.initialize(FULL)
        client.receive()
        client.open("a.xmc", text)
        client.diagnostics()
        for version in range(2, 1002):
            text, end = edited(client, "a.xmc", version, text, source, len(head), end, alphabet)
            if version % 50 == 0 or version > 990:
                latest(client, version)
                symbols = client.request("textDocument/documentSymbol",
                                         {"textDocument": {"uri": client.uri("a.xmc")}})
                shown = symbols[0]["children"][0]["detail"]
                assert shown == text[len(head):end].replace("\n", "\\n"), (shown, text)
        assert end - len(head) > 50, "the edits left hardly any text"
        latest_or_none = client.request("shutdown")
        assert latest_or_none is None
        client.notify("exit")
        assert client.wait() == 0


def random_document(folder):
    """After 1,000 edits anywhere the server finds what a fresh one finds in the client's text."""
    source = random.Random(8)
    text = ENGLISH
    alphabet = ["a", " ", "<", ">", "&", "/", '"', "=", "\n", "\r\n", "\u00e4", "\U0001f600", "<arg name=\"x\"/>",
                "<msg name=\"k\">", "</msg>", "<br/>", "<!-- ", " -->"]
    symbols = {"textDocument": {"uri": (folder.resolve() / "a.xmc").as_uri()}}
    with Client(PROGRAM, folder) as client:
        client.initialize(FULL)
        client.receive()
        client.open("a.xmc", text)
        client.diagnostics()
        for version in range(2, 1002):
            # A random index may be between CR and LF, where no position is.
            text, _ = edited(client, "a.xmc", version, text, source, 0, len(text), alphabet[:9] + alphabet[10:])
            if version % 100 == 0:
                found = latest(client, version)
                listed = client.request("textDocument/documentSymbol", symbols)
                with Client(PROGRAM, folder) as fresh:
                    fresh.initialize(FULL)
                    fresh.receive()
                    fresh.open("a.xmc", text, version)
                    assert fresh.diagnostics()[0][1] == found
                    assert fresh.request("textDocument/documentSymbol", symbols) == listed
                if len(text) > 5000:
                    text = ENGLISH
                    client.change("a.xmc", version + 5000, text)
                    latest(client, version + 5000)


SESSIONS = [editing, plain, completion, includes, options, unsaved, errors]
OTHERS = [cancelling, ends, encodings, cut_frames, random_content, random_document]


def compare(name, transcript):
    text = "".join(f"{side} {json.dumps(message, ensure_ascii=False, sort_keys=True)}\n"
                   for side, message in transcript)
    path = GOLDEN / f"{name}.txt"
    if "TOVA_UPDATE_GOLDEN" in os.environ:
        path.write_text(text, encoding="utf-8")
    expected = path.read_text(encoding="utf-8")
    for number, (wanted, actual) in enumerate(zip(expected.splitlines(), text.splitlines()), 1):
        assert wanted == actual, f"{path}:{number}: expected\n{wanted}\nbut the session has\n{actual}"
    assert expected == text, f"{path}: another number of messages"


def main():
    wanted = sys.argv[3:]
    clients = []
    make = Client.__init__

    def kept(self, *arguments):
        make(self, *arguments)
        clients.append(self)
    Client.__init__ = kept
    for session in SESSIONS + OTHERS:
        if wanted and session.__name__ not in wanted:
            continue
        clients.clear()
        with tempfile.TemporaryDirectory() as folder:
            session(pathlib.Path(folder))
        if session in SESSIONS:
            compare(session.__name__, clients[0].transcript)
        print(f"{session.__name__}: ok", flush=True)


if __name__ == "__main__":
    main()
