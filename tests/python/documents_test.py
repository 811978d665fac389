"""The result texts of every input type, operation and option against their JSON Schema."""

import copy
import itertools
import json
import os
import unittest
from pathlib import Path

import numpy as np
from jsonschema import Draft202012Validator

from rt305_4 import _interface as c
from rt305_4._library import Row, process
from three_phase import system

SCHEMA = json.loads(Path(os.environ["RT305_4_SOURCE"], "docs/schema/results.schema.json").read_text())
TABLES = ("paramData", "signalDataU", "signalDataI", "spectrumDataU", "spectrumDataI", "thdDataU", "thdDataI")
VALIDATORS = {name: Draft202012Validator({**SCHEMA, "oneOf": [{"$ref": f"#/$defs/{name}"}]}) for name in TABLES}
KINDS = {4: "U", 8: "I", 21: "UI"}


def documents(channels, input_type, operation, spectrum_flags=0, measurement_flags=0x70000001, peaks=5, criterion=0.0):
    """The documents that one call makes, by the name of their table."""
    rows = [Row(place, samples) for place, samples in enumerate(channels)]
    texts = process(rows, operation, input_type, spectrum_flags, measurement_flags, sampleRate=1e4, auxMode=peaks,
                    auxValue=criterion)
    made = [texts["paramData"]]
    if operation:
        made += [texts[("timeSignalData", "spectrumParam", "paramDataThd")[operation - 1] + kind]
                 for kind in KINDS[input_type]]
    return {next(iter(document)): document for document in map(json.loads, made)}


def hard_channels(samples):
    """Six channels by name, most of which cannot be measured completely."""
    clean = np.array(system(samples))
    gaps = clean.copy()
    gaps[0, samples // 2], gaps[4, samples // 3] = np.nan, np.inf
    return {"clean": clean, "dead": 0 * clean, "gaps": gaps, "huge": 1e300 * clean, "tiny": 1e-320 * clean}


class Documents(unittest.TestCase):
    def check(self, channels, input_type, operation, **options):
        made = documents(channels, input_type, operation, **options)
        for name, document in made.items():
            for error in VALIDATORS[name].iter_errors(document):
                self.fail(f"{name}: {error.message} at {list(error.absolute_path)}")
        return made

    def test_types_operations_and_signals(self):
        for samples, input_type, operation in itertools.product((1, 2, 33, 200), KINDS, range(4)):
            for name, channels in hard_channels(samples).items():
                with self.subTest(name, samples=samples, type=input_type, operation=operation):
                    self.assertEqual(len(self.check(channels, input_type, operation)),
                                     1 + (len(KINDS[input_type]) if operation else 0))

    def test_options(self):
        channels = np.array(system(60))
        for bits in itertools.product((0, 0x1), (0, 0x60, 0xE0), (0, 0x100), (0, 0xE00), range(0, 8 << 16, 1 << 16)):
            self.check(channels, 21, 0, measurement_flags=sum(bits))
        for input_type, window, mode, level, criterion, peaks in itertools.product(
            KINDS, range(4), (0, c.SPECTRUM_MODE_2), (0, c.SPECTRUM_LEVEL_DB), (0, c.SPECTRUM_CRITERION), (0, 25)
        ):
            flags = window << 24 | mode | level | criterion
            self.check(channels, input_type, 2, spectrum_flags=flags, peaks=peaks, criterion=-20.0)

    def test_damaged_documents_are_refused(self):
        Draft202012Validator.check_schema(SCHEMA)
        damages = [
            lambda rows: rows.reverse(),
            lambda rows: rows.append(rows[0]),
            lambda rows: rows[0].update(more=1),
            lambda rows: rows[1].popitem(),
            lambda rows: rows[2].update({next(iter(rows[2])): None}),
        ]
        for operation in range(4):
            for name, document in documents(np.array(system(100)), 21, operation).items():
                self.assertEqual([table for table in TABLES if VALIDATORS[table].is_valid(document)], [name])
                for number, damage in enumerate(damages):
                    damaged = copy.deepcopy(document)
                    damage(damaged[name])
                    self.assertFalse(VALIDATORS[name].is_valid(damaged), (name, number))
