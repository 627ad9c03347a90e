#!/usr/bin/env python3
"""Opens a page of `moradmin view` in a headless Chromium and uses it as a person would.

    page_driver.py PAGE STEPS

STEPS are lines of JSON, each ["what", ...]; the answers are printed, one line of JSON each:
["script", TEXT] runs it as a function's body; ["click", CSS] clicks the middle of an element;
["at", X, Y] clicks there on the stage; ["key", TEXT] types into what has the focus; ["picture", FILE]
writes a PNG of the window. Exit code 77 where there is no chromedriver.
"""

import base64
import json
import pathlib
import shutil
import subprocess
import sys
import time
import urllib.error
import urllib.request

DRIVER = shutil.which("chromedriver")


class Browser:
    """One window, driven through the standard protocol of browsers."""

    def __init__(self):
        self.driver = subprocess.Popen([DRIVER, "--port=0"], stdout=subprocess.PIPE, text=True)
        self.base = None
        for line in self.driver.stdout:
            if "successfully on port" in line:
                port = "".join(c for c in line.rsplit("port", 1)[1] if c.isdigit())
                self.base = f"http://127.0.0.1:{port}"
                break
        words = ["--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1200,800", "--disable-dev-shm-usage"]
        wanted = {"goog:chromeOptions": {"args": words}, "goog:loggingPrefs": {"browser": "ALL"}}
        session = self.ask("POST", "/session", {"capabilities": {"alwaysMatch": wanted}})
        self.base += "/session/" + session["sessionId"]

    def ask(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise SystemExit(f"{path}: {error.read().decode()}") from error

    def script(self, text):
        return self.ask("POST", "/execute/sync", {"script": text, "args": []})

    def at(self, x, y):
        box = self.script("const b = document.getElementById('stage').getBoundingClientRect(); return [b.x, b.y];")
        moves = [
            {"type": "pointerMove", "duration": 0, "x": round(box[0] + x), "y": round(box[1] + y)},
            {"type": "pointerDown", "button": 0},
            {"type": "pointerUp", "button": 0},
        ]
        self.ask("POST", "/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": moves}]})

    def click(self, css):
        found = self.ask("POST", "/element", {"using": "css selector", "value": css})
        self.ask("POST", f"/element/{next(iter(found.values()))}/click", {})

    def key(self, text):
        keys = [{"type": kind, "value": c} for c in text for kind in ("keyDown", "keyUp")]
        self.ask("POST", "/actions", {"actions": [{"type": "key", "id": "keys", "actions": keys}]})

    def picture(self, file):
        pathlib.Path(file).write_bytes(base64.b64decode(self.ask("GET", "/screenshot")))

    def end(self):
        try:
            self.ask("DELETE", "")
        finally:
            self.driver.terminate()
            self.driver.wait()


def main():
    if DRIVER is None:
        return 77
    page, steps = sys.argv[1:]
    browser = Browser()
    try:
        begin = time.monotonic()
        browser.ask("POST", "/url", {"url": pathlib.Path(page).resolve().as_uri()})
        print(json.dumps({"opened": round(time.monotonic() - begin, 3)}))
        for line in pathlib.Path(steps).read_text(encoding="utf-8").splitlines():
            what, *words = json.loads(line)
            print(json.dumps(getattr(browser, what)(*words)))
        faults = browser.ask("POST", "/se/log", {"type": "browser"})
        print(json.dumps([entry["message"] for entry in faults]))
    finally:
        browser.end()
    return 0


if __name__ == "__main__":
    sys.exit(main())
