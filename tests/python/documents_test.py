"""The result texts of every input type, operation and option against their JSON Schema."""

import copy
import ctypes
import itertools
import json
import os
import unittest
from pathlib import Path

import numpy as np
from jsonschema import Draft202012Validator

from rt305_4 import _library
from three_phase import system

SCHEMA = json.loads(Path(os.environ["RT305_4_SOURCE"], "docs/schema/results.schema.json").read_text())
ANY = Draft202012Validator(SCHEMA)
ONE = {
    name: Draft202012Validator({"$defs": SCHEMA["$defs"], "$ref": f"#/$defs/{name}"})
    for name in ("paramData", *(table + kind for table in ("signalData", "spectrumData", "thdData") for kind in "UI"))
}
OPERATIONS = {1: ("timeSignalData", "signalData"), 2: ("spectrumParam", "spectrumData"), 3: ("paramDataThd", "thdData")}
KINDS = {4: "U", 8: "I", 21: "UI"}


def texts_of(rows, input_type, operation, spectrum_flags=0, measurement_flags=0x70000001, peaks=5, criterion=0.0):
    """The texts that one call makes, by the name of their table."""
    descriptors = (_library.ChannelData * 6)()
    for place, (descriptor, row) in enumerate(zip(descriptors, rows)):
        pointer = row.ctypes.data_as(ctypes.POINTER(ctypes.c_double))
        descriptor.signalKind, descriptor.phase = divmod(place, 3)
        descriptor.samples, descriptor.count, descriptor.coefficient = pointer, len(row), 1.0
    texts = _library.process(
        _library.Request(
            channels=descriptors, channelCount=6, samplesNumber=len(rows[0]), sampleRate=10000.0, auxValue=criterion,
            auxMode=peaks, inputType=input_type, spectrumFlags=spectrum_flags, measurementFlags=measurement_flags,
            operation=operation,
        )
    )
    made = {"paramData": texts["paramData"]}
    if operation:
        text, table = OPERATIONS[operation]
        made |= {table + kind: texts[text + kind] for kind in KINDS[input_type]}
    return made


def hard_signals(samples):
    """Channels in which something is missing: by name."""
    clean = np.array(system(samples))
    gap, huge = clean.copy(), 1e300 * clean
    gap[0, samples // 2] = np.nan
    gap[4, samples // 3] = np.inf
    return {"clean": clean, "dead": np.zeros((6, samples)), "gaps": gap, "huge": huge, "tiny": 1e-320 * clean}


def whole(document):
    """All rows of a document's one table."""
    (table,) = document.values()
    return table


class Documents(unittest.TestCase):
    def check(self, texts):
        for name, text in texts.items():
            document = json.loads(text)
            for error in ONE[name].iter_errors(document):
                self.fail(f"{name}: {error.message} at {list(error.absolute_path)}")
            if name.startswith("spectrum"):
                for row in whole(document):
                    self.assertEqual(len(row["dataTnv"]), len(row["dataTnvf"]))
        return len(texts)

    def test_types_operations_and_signals(self):
        checked = 0
        for samples, input_type, operation in itertools.product((1, 2, 33, 200), KINDS, range(4)):
            for name, rows in hard_signals(samples).items():
                with self.subTest(name, samples=samples, type=input_type, operation=operation):
                    checked += self.check(texts_of(rows, input_type, operation))
        self.assertEqual(checked, 4 * 5 * (3 * 4 + 3 * (1 + 1 + 2)))

    def test_measurement_options(self):
        rows = np.array(system(300))
        for bits in itertools.product((0, 0x1), (0, 0x20), (0, 0x40, 0xC0), (0, 0x100), (0, 0xE00), range(8), (0, 7)):
            flags = sum(bits[:5]) | bits[5] << 16 | bits[6] << 28
            with self.subTest(flags=hex(flags)):
                self.check(texts_of(rows, 21, 0, measurement_flags=flags))

    def test_spectrum_options(self):
        rows = np.array(system(60))
        for input_type, window, mode, level, criterion, peaks in itertools.product(
            KINDS, range(4), (0, 0x10000000), (0, 2), (0, 0x10000), (0, 25)
        ):
            flags = window << 24 | mode | level | criterion
            with self.subTest(type=input_type, flags=hex(flags), peaks=peaks):
                texts = texts_of(rows, input_type, 2, flags, peaks=peaks, criterion=-20.0)
                self.check(texts)
                row = whole(json.loads(texts["spectrumData" + KINDS[input_type][0]]))[0]
                self.assertEqual(row["LastNameY"] == "L,dB", level == 2)
                self.assertEqual(row["paramData"] is None, peaks == 0)


class Schema(unittest.TestCase):
    def test_any_document_is_exactly_one(self):
        Draft202012Validator.check_schema(SCHEMA)
        rows = hard_signals(100)["gaps"]
        for operation in range(4):
            for name, text in texts_of(rows, 21, operation).items():
                document = json.loads(text)
                ANY.validate(document)
                self.assertEqual([other for other in ONE if ONE[other].is_valid(document)], [name])

    def test_damaged_documents_are_refused(self):
        damages = (
            lambda rows: rows.reverse(),
            lambda rows: rows.pop(),
            lambda rows: rows.append(rows[0]),
            lambda rows: rows[0].update(more=1),
            lambda rows: rows[1].popitem(),
            lambda rows: rows[2].update({next(iter(rows[2])): "x"}),
            lambda rows: rows[2].update({next(iter(rows[2])): None}),
        )
        inner = (
            lambda row: row["paramData"].reverse() if len(row["paramData"]) == 4 else row["paramData"][0].update(fi=None),
            lambda row: row["paramData"][0].popitem(),
            lambda row: row.update(paramData=[]),
        )
        for operation in range(4):
            for name, text in texts_of(np.array(system(100)), 21, operation).items():
                document = json.loads(text)
                for number, damage in enumerate(damages):
                    damaged = copy.deepcopy(document)
                    damage(whole(damaged))
                    self.assertFalse(ONE[name].is_valid(damaged), (name, number))
                for number, damage in enumerate(inner if operation in (1, 2) and name != "paramData" else ()):
                    damaged = copy.deepcopy(document)
                    damage(whole(damaged)[1])
                    self.assertFalse(ONE[name].is_valid(damaged), (name, "inner", number))


if __name__ == "__main__":
    unittest.main()
