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
DATA = pathlib.Path(__file__).parents[1] / "data"
LINES = SAMPLE.read_text().splitlines()


def report(recording, *options, **more):
    command = [os.environ["TOOL"], "report", str(recording), *options]
    return subprocess.run(command, check=True, capture_output=True, **more).stdout


class Page(html.parser.HTMLParser):
    """Collects what a page holds, and what is wrong with its structure."""

    def __init__(self, page):
        super().__init__()
        self.open, self.faults, self.ids, self.targets, self.blocks, self.texts = [], [], [], [], [], []
        self.rows, self.tags = [], []
        self.feed(page.decode("utf-8"))
        self.faults += self.open + [target for target in self.targets if target[0] == "#" and target[1:] not in self.ids]
        self.groups = json.loads(next((text for _, type_, text in self.blocks if type_ == "application/json"), "[]"))
        headings = [int(tag[1]) for tag in self.tags if tag in ("h1", "h2", "h3", "h4")]
        self.faults += [] if headings.count(1) == 1 else ["h1"]
        self.faults += [f"h{level}" for before, level in zip(headings, headings[1:]) if level > before + 1]

    def handle_starttag(self, tag, attributes):
        names = dict(attributes)
        self.tags.append(tag)
        self.faults += [f"<{tag}> without scope"] if tag == "th" and "scope" not in names else []
        self.rows += [[]] if tag == "tr" else []
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
        if any(tag == "tr" for tag, _ in self.open) and data.strip():
            self.rows[-1].append(data.strip())
        if self.open and self.open[-1][0] in ("script", "style"):
            self.blocks.append((self.open[-1][0], self.open[-1][1].get("type"), data))


class ReportPage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def test_of_the_sample(self):
        first = report(SAMPLE)
        self.assertTrue(first == report(os.path.relpath(SAMPLE)))
        self.assertLess(len(first), 300_000)
        self.assertFalse(b"http://" in first or b"https://" in first)
        page = Page(first)
        self.assertEqual(page.faults, [])
        for text in ("230.229", "4.472", "0.997115", hashlib.sha256(SAMPLE.read_bytes()).hexdigest(), "sample.csv"):
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
                self.assertEqual([curve["phase"] for curve in panel["curves"]], ["a", "b", "c"])

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
        values = base64.b64decode(page.groups[0]["panels"][0]["curves"][2]["values"][1:])
        self.assertEqual(values.count(0), 40, "one for each missing sample")
        self.assertIn("SHA-256 of stdin", page.texts)
        self.assertIn("Events are not looked for: 0.04 s are too short; a grid of 50 Hz needs 0.06 s, 3 cycles.",
                      Page(report(SAMPLE, "--duration", "2cycles")).texts)

    def test_figures_have_their_caveats_beside_them(self):
        unsteady = "rt305 generate --duration 0.5s >a; rt305 generate --duration 0.5s --voltage 100 | sed 1d >>a; cut -d, -f2- a"
        for generate, options, rows, caveats in (
                ("rt305 generate --voltage 63e3 --current 2e-3 --angle 60", [],
                 [["Voltage U", "63.000", "63.000", "63.000", "kV"], ["Line voltage ab, bc, ca", *3 * ["109.12"], "kV"],
                  ["Current I", *3 * ["2.0000"], "mA"], ["Frequency f", "50.000", "Hz"],
                  ["Active power P", "189.00", *3 * ["63.00"], "W"], ["Reactive power Q1", "327.36", *3 * ["109.12"], "var"],
                  ["Power factor PF", *4 * ["0.500"]], ["THD of voltage", *3 * ["0.00"], "%"],
                  ["Unbalance of voltage U2/U1", "0.00", "%"]], []),
                ("rt305 generate --angle 180 --offsets Ib=2", [],
                 [["Reactive power Q1", "1", *4 * ["0.0000"], "kvar"], ["Active power P", "1", "-3.4500", *3 * ["-1.1500"], "kW"], ["Current I", "2", *3 * ["5.0000"], "A"]],
                 ["All currents oppose", "large: Ib 2.00 A."]),
                ("rt305 generate --duration 0.05s", [],
                 [["THD of current", "not shown: 2.0 cycles are too few", "%"]], []),
                (unsteady, ["--rate", "10kHz"],
                 [["Voltage U", "1", "177.34", "177.34", "177.34", "V"],
                  ["Unbalance of voltage U2/U1", "not shown: the signal is not steady", "%"]],
                 ["averages over all", "longest steady part"]),
                (f"cat {DATA / 'sound.wav'}", ["--map", "Ua=1"], [["Voltage U", "1", "577.26", "mV"]],
                 ["relative to full scale"])):
            recording = subprocess.run(generate, shell=True, check=True, capture_output=True, cwd=self.folder,
                                       env={**os.environ, "PATH": os.path.dirname(os.environ["TOOL"]) + ":/usr/bin:/bin"}).stdout
            page = Page(report("-", *options, input=recording))
            self.assertEqual(page.faults, [])
            for row in rows:
                self.assertIn(row, page.rows)
            shown = " ".join(page.texts)
            self.assertEqual([words for words in caveats if shown.count(words) != 1], [])

    def test_several_recordings_and_texts(self):
        pathlib.Path(self.folder, "a#.csv").write_text("\n".join(LINES[:2001]))
        pathlib.Path(self.folder, "<bad>.csv").write_text("nothing")
        pathlib.Path(self.folder, "index").write_text("\n".join(LINES[:2001]))
        pathlib.Path(self.folder, "texts.toml").write_text('site = "Bay <3>"')
        options = ["--settings", "texts.toml", "--title", 'A "b" </style>', "--note", "one\ntwo", "-o", "pages"]
        run = subprocess.run([os.environ["TOOL"], "report", str(SAMPLE), "a#.csv", "<bad>.csv", "a#.csv", "index", *options],
                             cwd=self.folder, capture_output=True, text=True)
        pages = pathlib.Path(self.folder, "pages")
        self.assertEqual((run.returncode, sorted(page.name for page in pages.iterdir())),
                         (4, ["a#.csv-2.html", "a#.csv.html", "index-2.html", "index.html", "sample.csv.html"]))
        index = Page((pages / "index.html").read_bytes())
        self.assertEqual((index.faults, index.targets), ([], ["./sample.csv.html", "./a%23.csv.html", "./a%23.csv-2.html",
                                                             "./index-2.html"]))
        self.assertEqual([row[0] for row in index.rows[1:]], ["sample.csv", "a#.csv", "<bad>.csv", "a#.csv", "index"])
        self.assertTrue(index.rows[3][1].startswith("No page: <bad>.csv"), index.rows[3])
        page = Page((pages / "a#.csv.html").read_bytes())
        self.assertEqual(page.faults, [])
        for text in ('A "b" </style>: a#.csv', "Bay <3>", "one", "two"):
            self.assertIn(text, page.texts)
        for arguments, words in (([SAMPLE, SAMPLE], "folder"), ([SAMPLE, "pages/index.html", "-o", "pages"], "would be lost")):
            run = subprocess.run([os.environ["TOOL"], "report", *arguments], cwd=self.folder, capture_output=True, text=True)
            self.assertEqual((run.returncode, words in run.stderr), (2, True), run.stderr)


unittest.main()
