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
VOID = {"meta", "link", "br", "hr", "img", "input"}


def report(recording, *options, **more):
    command = [os.environ["TOOL"], "report", str(recording), *options]
    return subprocess.run(command, check=True, capture_output=True, **more).stdout


class Page(html.parser.HTMLParser):
    """Collects what a page holds, and what is wrong with its structure."""

    def __init__(self, page):
        super().__init__()
        self.open, self.faults, self.ids, self.targets = [], [], [], []
        self.policy, self.blocks, self.cells, self.texts = "", [], [], []
        self.feed(page.decode("utf-8"))
        self.faults += [f"<{tag}> is not closed" for tag, _ in self.open]

    def handle_starttag(self, tag, attributes):
        names = dict(attributes)
        self.faults += [f"<{tag} {name}>" for name in names if name in ("src", "style") or name.startswith("on")]
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
        if tag in ("td", "th"):
            self.cells.append(data)


class ReportPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.bytes = report(SAMPLE)
        cls.page = Page(cls.bytes)

    def test_is_one_small_file_that_is_always_the_same(self):
        self.assertTrue(self.bytes == report(os.path.relpath(SAMPLE)))
        self.assertLess(len(self.bytes), 300_000)
        self.assertFalse(b"http://" in self.bytes or b"https://" in self.bytes)

    def test_is_well_formed(self):
        self.assertEqual(self.page.faults, [])
        self.assertEqual(len(self.page.ids), len(set(self.page.ids)))
        self.assertEqual([target for target in self.page.targets if target[1:] not in self.page.ids], [])

    def test_policy_admits_its_own_scripts_and_style_only(self):
        allowed = {"default-src": ["'none'"], "base-uri": ["'none'"], "form-action": ["'none'"]}
        for tag, type_, text in self.page.blocks:
            if type_ is None:
                digest = base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()
                allowed.setdefault(tag + "-src", []).append(f"'sha256-{digest}'")
        directives = (directive.split() for directive in self.page.policy.split(";"))
        self.assertEqual({name: sources for name, *sources in directives}, allowed)

    def test_data_block_holds_all_curves(self):
        groups = json.loads(next(text for _, type_, text in self.page.blocks if type_ == "application/json"))
        self.assertEqual([(group["name"], len(group["panels"])) for group in groups], [("waveforms", 2), ("spectra", 2)])
        for group in groups:
            self.assertIn(group["name"], self.page.ids)
            for panel in group["panels"]:
                self.assertEqual([series["phase"] for series in panel["series"]], ["a", "b", "c"])
                for series in panel["series"]:
                    self.assertEqual(len(series["values"]), len(panel["index"]))

    def test_tells_the_figures_and_where_they_are_from(self):
        for text in ("230.229", "4.472", "997.115", hashlib.sha256(SAMPLE.read_bytes()).hexdigest(), "sample.csv"):
            self.assertIn(text, self.page.cells)

    def test_foreign_text_stays_text(self):
        lines = SAMPLE.read_text().splitlines()
        with tempfile.TemporaryDirectory() as folder:
            recording = pathlib.Path(folder, "<script>alert(1)&lt;.csv")
            name = 'Ua </script><script>alert("1")</script>'
            heading = lines[0].split(",")
            heading[1] = '"' + name.replace('"', '""') + '"'
            recording.write_text("\n".join([",".join(heading), *lines[1:]]))
            page = Page(report(recording, "--map", "Ua=1"))
        self.assertEqual(page.faults, [])
        self.assertEqual(len([tag for tag, _, _ in page.blocks if tag == "script"]), 3)
        self.assertIn("Measurement of <script>alert(1)&lt;.csv", page.texts)
        self.assertTrue(any("</script><script>" in cell for cell in page.cells))

    def test_voltages_alone_gaps_and_stdin(self):
        lines = SAMPLE.read_text().splitlines()
        voltages = [",".join(line.split(",")[:4]) for line in lines]
        voltages[101] = voltages[101].rsplit(",", 1)[0] + ","
        page = Page(report("-", input="\n".join(voltages).encode()))
        self.assertEqual(page.faults, [])
        groups = json.loads(next(text for _, type_, text in page.blocks if type_ == "application/json"))
        self.assertEqual([len(group["panels"]) for group in groups], [1, 1])
        self.assertIn(None, groups[0]["panels"][0]["series"][2]["values"])
        self.assertIn("none: read from stdin", page.cells)

    def test_names_no_folder(self):
        lines = SAMPLE.read_text().splitlines()
        with tempfile.TemporaryDirectory() as folder:
            recording = pathlib.Path(folder, "jump.csv")
            recording.write_text("\n".join(lines[:5001] + lines[5401:]))
            page = report(recording)
            self.assertTrue(b"<li>jump.csv:5002: the time step" in page)
            self.assertFalse(folder.encode() in page)


if __name__ == "__main__":
    unittest.main()
