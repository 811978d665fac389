"""The report page as the tool writes it: one valid file that needs nothing else."""

import base64
import hashlib
import html.parser
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

SAMPLE = pathlib.Path(os.environ["RT305_4_SOURCE"], "examples/recordings/sample.csv")
LINES = SAMPLE.read_text().splitlines()


def report(recording, *options, **more):
    command = [os.environ["TOOL"], "report", str(recording), *options]
    return subprocess.run(command, check=True, capture_output=True, **more).stdout


class Page(html.parser.HTMLParser):
    """Collects what a page holds, and what is wrong with its structure."""

    def __init__(self, page):
        super().__init__()
        self.open, self.faults, self.ids, self.targets, self.blocks, self.texts = [], [], [], [], [], []
        self.feed(page.decode("utf-8"))
        self.faults += self.open + [target for target in self.targets if target[1:] not in self.ids]
        self.groups = json.loads(next(text for _, type_, text in self.blocks if type_ == "application/json"))

    def handle_starttag(self, tag, attributes):
        names = dict(attributes)
        self.faults += [f"<{tag} {name}>" for name in names if name in ("src", "style") or name.startswith("on")]
        self.faults += [names["id"]] if names.get("id") in self.ids else []
        self.ids += [names["id"]] if "id" in names else []
        self.targets += [names["href"]] if "href" in names else []
        if tag == "meta" and "http-equiv" in names:
            self.policy = names["content"]
        self.open += [(tag, names)] if tag not in ("meta", "link", "br", "hr", "img", "input") else []

    def handle_endtag(self, tag):
        self.faults += [f"</{tag}>"] if not self.open or self.open.pop()[0] != tag else []

    def handle_data(self, data):
        self.texts.append(data)
        if self.open and self.open[-1][0] in ("script", "style"):
            self.blocks.append((self.open[-1][0], self.open[-1][1].get("type"), data))


class ReportPage(unittest.TestCase):
    def test_of_the_sample(self):
        first = report(SAMPLE)
        self.assertTrue(first == report(os.path.relpath(SAMPLE)))
        self.assertLess(len(first), 300_000)
        self.assertFalse(b"http://" in first or b"https://" in first)
        page = Page(first)
        self.assertEqual(page.faults, [])
        for text in ("230.229", "4.472", "997.115", hashlib.sha256(SAMPLE.read_bytes()).hexdigest(), "sample.csv"):
            self.assertIn(text, page.texts)
        allowed = {"default-src": ["'none'"], "base-uri": ["'none'"], "form-action": ["'none'"]}
        for tag, _, text in (block for block in page.blocks if block[1] is None):
            digest = base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()
            allowed.setdefault(tag + "-src", []).append(f"'sha256-{digest}'")
        directives = (directive.split() for directive in page.policy.split(";"))
        self.assertEqual({name: sources for name, *sources in directives}, allowed)
        for group, (name, panels) in zip(page.groups, (("waveforms", 2), ("traces", 3), ("spectra", 2)), strict=True):
            self.assertEqual((group["name"], len(group["panels"]), name in page.ids), (name, panels, True))
            for panel in group["panels"][:2]:
                self.assertEqual([series["phase"] for series in panel["series"]], ["a", "b", "c"])
                self.assertEqual({len(series["values"]) for series in panel["series"]}, {len(panel["index"])})

    def test_foreign_texts_stay_text_and_folders_are_not_named(self):
        heading = LINES[0].replace("Ua(V)", '"Ua </script><script>alert(1)</script>{{data}}"')
        with tempfile.TemporaryDirectory() as folder:
            recording = pathlib.Path(folder, "<script>alert(1)&lt;.csv")
            recording.write_text("\n".join([heading, *LINES[1:5001], *LINES[5401:]]))
            content = report(recording, "--map", "Ua=1")
            self.assertFalse(folder.encode() in content)
        page = Page(content)
        self.assertEqual((page.faults, [tag for tag, _, _ in page.blocks].count("script")), ([], 3))
        for words in ("Measurement of <script>alert(1)&lt;.csv", "<script>alert(1)&lt;.csv:5002: ",
                      '"Ua </script><script>alert(1)</script>{{data}}"'):
            self.assertTrue(any(words in text for text in page.texts), words)

    def test_voltages_alone_gaps_and_stdin(self):
        voltages = [",".join(line.split(",")[:4]) for line in LINES]
        voltages[101:141] = [line.rsplit(",", 1)[0] + "," for line in voltages[101:141]]
        page = Page(report("-", input="\n".join(voltages).encode()))
        self.assertEqual((page.faults, [len(group["panels"]) for group in page.groups]), ([], [1, 2, 1]))
        self.assertIn(None, page.groups[0]["panels"][0]["series"][2]["values"])
        self.assertIn("SHA-256 of stdin", page.texts)


unittest.main()
