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

SOURCE = pathlib.Path(os.environ["RT305_4_SOURCE"])
SAMPLE = SOURCE / "examples/recordings/sample.csv"
LINES = SAMPLE.read_text().splitlines()
VOID = {"meta", "link", "br", "hr", "img", "input"}


def report(recording, *options, **more):
    command = [os.environ["TOOL"], "report", str(recording), *options]
    return subprocess.run(command, check=True, capture_output=True, **more).stdout


class Page(html.parser.HTMLParser):
    """Collects what a page holds, and what is wrong with its structure."""

    def __init__(self, page):
        super().__init__()
        self.open, self.faults, self.ids, self.targets = [], [], [], []
        self.policy, self.blocks, self.texts = "", [], []
        self.feed(page.decode("utf-8"))
        self.faults += [f"<{tag}> is not closed" for tag, _ in self.open]
        self.faults += [target for target in self.targets if target[1:] not in self.ids]
        self.groups = json.loads(next(text for _, type_, text in self.blocks if type_ == "application/json"))

    def handle_starttag(self, tag, attributes):
        names = dict(attributes)
        self.faults += [f"<{tag} {name}>" for name in names if name in ("src", "style") or name.startswith("on")]
        self.faults += [names["id"]] if names.get("id") in self.ids else []
        self.ids += [names["id"]] if "id" in names else []
        self.targets += [names["href"]] if "href" in names else []
        if names.get("http-equiv") == "Content-Security-Policy":
            self.policy = names["content"]
        if tag not in VOID:
            self.open.append((tag, names))

    def handle_endtag(self, tag):
        if not self.open or self.open.pop()[0] != tag:
            self.faults.append(f"</{tag}> closes something else")

    def handle_data(self, data):
        tag, attributes = self.open[-1] if self.open else ("", {})
        if tag in ("script", "style"):
            self.blocks.append((tag, attributes.get("type"), data))
        else:
            self.texts.append(data)


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
        for tag, type_, text in page.blocks:
            if type_ is None:
                digest = base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()
                allowed.setdefault(tag + "-src", []).append(f"'sha256-{digest}'")
        directives = (directive.split() for directive in page.policy.split(";"))
        self.assertEqual({name: sources for name, *sources in directives}, allowed)
        for group, name in zip(page.groups, ("waveforms", "spectra"), strict=True):
            self.assertEqual((group["name"], len(group["panels"]), name in page.ids), (name, 2, True))
            for panel in group["panels"]:
                self.assertEqual([series["phase"] for series in panel["series"]], ["a", "b", "c"])
                self.assertEqual({len(series["values"]) for series in panel["series"]}, {len(panel["index"])})

    def test_foreign_texts_stay_text_and_folders_are_not_named(self):
        name = 'Ua </script><script>alert("1")</script>{{data}}'
        heading = LINES[0].split(",")
        heading[1] = '"' + name.replace('"', '""') + '"'
        with tempfile.TemporaryDirectory() as folder:
            recording = pathlib.Path(folder, "<script>alert(1)&lt;.csv")
            recording.write_text("\n".join([",".join(heading), *LINES[1:5001], *LINES[5401:]]))
            content = report(recording, "--map", "Ua=1")
            self.assertFalse(folder.encode() in content)
        page = Page(content)
        self.assertEqual(page.faults, [])
        self.assertEqual(len([tag for tag, _, _ in page.blocks if tag == "script"]), 3)
        self.assertIn("Measurement of <script>alert(1)&lt;.csv", page.texts)
        self.assertTrue(any("</script><script>" in text and "{{data}}" in text for text in page.texts))
        self.assertTrue(any(text.startswith("<script>alert(1)&lt;.csv:5002: ") for text in page.texts))

    def test_voltages_alone_gaps_and_stdin(self):
        voltages = [",".join(line.split(",")[:4]) for line in LINES]
        voltages[101] = voltages[101].rsplit(",", 1)[0] + ","
        page = Page(report("-", input="\n".join(voltages).encode()))
        self.assertEqual(page.faults, [])
        self.assertEqual([len(group["panels"]) for group in page.groups], [1, 1])
        self.assertIn(None, page.groups[0]["panels"][0]["series"][2]["values"])
        self.assertIn("none: read from stdin", page.texts)


if __name__ == "__main__":
    unittest.main()
