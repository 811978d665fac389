"""The JSON documents of the tool against their JSON Schema."""

import csv
import json
import os
import pathlib
import subprocess
import unittest

from jsonschema import Draft202012Validator

SOURCE = pathlib.Path(os.environ["RT305_4_SOURCE"])
DATA = SOURCE / "tests/host/data"
SCHEMA = json.loads((SOURCE / "docs/schema/rt305.schema.json").read_text())
SAMPLE = (SOURCE / "examples/recordings/sample.csv").read_text()
VOLTAGES, CURRENT = ("\n".join(",".join(line.split(",")[part]) for line in SAMPLE.splitlines())
                     for part in (slice(0, 4), slice(0, 5, 4)))
LINE_VOLTAGES = VOLTAGES.replace("Ua(V),Ub(V),Uc(V)", "Uab(V),Ubc(V),Uca(V)")
DEAD = "\n".join([line.rsplit(",", 1)[0] + (",0" if line[0] != "T" else ",Ic(A)") for line in SAMPLE.splitlines()])

# arguments, input, and the definition that each line is of
RUNS = [
    *((f"{command} --json-lines -", text, "measurement") for command in (
        "measure", "measure --window 0.3", "params --power two-wattmeter-phase", "signals", "spectrum",
        "spectrum --db --criterion -40", "distortion") for text in (SAMPLE, VOLTAGES, CURRENT, LINE_VOLTAGES, DEAD)
        if "two" not in command or text != CURRENT),
    *((f"measure --json-lines {DATA / name}", "", "measurement") for name in ("relay.cfg", "swing.CFG", "logger.csv")),
    *((f"info --json {DATA / name}", "", "info") for name in ("relay.cfg", "segments.cfg", "single.cff", "sound.wav")),
    ("info --json -", "Ua,Ub,x\n1,2,-\n3,4,-\n", "info"),
    (f"quality --json --limits {SOURCE}/examples/limits/en50160-low-voltage.csv -", SAMPLE, "quality"),
    *((f"quality --json {DATA / name}", "", "quality") for name in ("relay.cfg", "swing.CFG")),
    *((f"quality --json-lines --interval {interval} {DATA / 'relay.cfg'}", "", "qualityLine")
      for interval in ("half-cycle", "cycles", "3s", "10min")),
    ("measure --json-lines missing\udcff.csv", "", "failure"),
]


class Documents(unittest.TestCase):
    def test_follow_the_schema(self):
        Draft202012Validator.check_schema(SCHEMA)
        for arguments, text, definition in RUNS:
            run = subprocess.run([os.environ["TOOL"], *arguments.split()], input=text, capture_output=True, text=True)
            documents = run.stdout.splitlines() if "lines" in arguments else [run.stdout]
            self.assertTrue(documents and documents[0], arguments + run.stderr)
            validator = Draft202012Validator({**SCHEMA, "oneOf": [{"$ref": f"#/$defs/{definition}"}]})
            for error in (error for document in documents for error in validator.iter_errors(json.loads(document))):
                for reason in error.context or [error]:
                    self.fail(f"{arguments}: {reason.message} at {list(reason.absolute_path)}")

    def test_wide_rows_have_all_figures(self):
        for text in (SAMPLE, CURRENT, LINE_VOLTAGES):
            document, wide = (subprocess.run([os.environ["TOOL"], "measure", form, "-"], input=text, check=True,
                                             capture_output=True, text=True).stdout for form in ("--json", "--csv-wide"))
            document, row = json.loads(document), next(csv.DictReader(wide.splitlines()))
            expected = {f"{table}_{quantity}_{column}": figure for table in ("parameters", "power", "derived")
                        for quantity, figures in document.get(table, {}).items()
                        for column, figure in figures.items() if column != "unit" and figure is not None}
            shown = {name: float(figure) for name, figure in row.items() if figure and name not in ("file", "start")}
            self.assertEqual(shown.keys(), expected.keys())
            for name, figure in expected.items():
                self.assertAlmostEqual(shown[name], figure, delta=1e-12 * abs(figure))


unittest.main()
