#!/usr/bin/env python3
"""Writes the recordings in its folder: one load as different recorders write it. README.md describes them."""

import math
import pathlib
import struct
import wave

HERE = pathlib.Path(__file__).parent
SQRT2 = math.sqrt(2.0)
UNITS = "VVVAAA"


def samples(t, hz=50.0):
    """Ua, Ub, Uc, Ia, Ib, Ic at time t."""
    theta = [2.0 * math.pi * (hz * t - phase / 3.0) for phase in range(3)]
    return ([57.7 * SQRT2 * (math.sin(x) + 0.03 * math.sin(5.0 * x)) for x in theta] +
            [1.2 * SQRT2 * math.sin(x - math.pi / 6.0) for x in theta])


def analog(names, units, scale, rests, end="\r\n"):
    lines = enumerate(zip(names, units, scale, rests), 1)
    return "".join(f"{i},{name},{phase},,{unit},{a:.9g},0,{rest}{end}" for i, ((name, phase), unit, a, rest) in lines)


def relay():
    names = [(name, "") for name in ("VA(kV)", "VB(kV)", "VC(kV)", "IA", "IB", "IC")]
    scale = [1e-6] * 3 + [1e-4] * 3
    cfg = "FEEDER 3,0\r\n8,6A,2D\r\n" + analog(names, ["kV"] * 3 + ["A"] * 3, scale, ["0,0,999900"] * 6)
    cfg += "1,*,0\r\n2,*,0\r\n60\r\n1\r\n960,96\r\n02/12/11,11:41:11.081315\r\n02/12/11,11:41:11.147000\r\nASCII\r\n"
    dat = ""
    for k in range(96):
        raw = [x / SQRT2 * f / a for x, f, a in zip(samples(k / 960.0, 60.0), [1e-3] * 3 + [1.0] * 3, scale)]
        dat += f"{k + 1:10d},{k * 1000000 // 960:10d}," + ",".join(f"{x:6.0f}" for x in raw) + ",0,1\r\n"
    return {"relay.cfg": cfg.encode(), "relay.dat": dat.encode() + b"\x1a",
            "relay.hdr": b"Summary Data:\r\nFREQ = 60.00\r\nIA = 1.2\r\nIB = 1.2\r\nIC = 1.2\r\n"}


def swing():
    names = [(f"{name}_шина_110кВ", name[1].upper()) for name in ("Ua", "Ub", "Uc", "Ia", "Ib", "Ic")]
    names += [(f"I{phase}_ВЛ2", phase.upper()) for phase in "abc"]
    rests = [f"{13 * i},-32767,32767,{'1100' if i < 3 else '60'},1,P" for i in range(9)]
    cfg = "Подстанция,576,1999\r\n10,9A,1D\r\n"
    cfg += analog(names, ["kV"] * 3 + ["A"] * 6, [5e-6] * 3 + [1e-4] * 6, rests)
    cfg += "1,Пуск,,,0\r\n50\r\n1\r\n1200,311\r\n22/08/2016,16:04:22.0\r\n22/08/2016,16:04:23.5\r\nBINARY\r\n1\r\n"
    rows = [[round(x / a) for x, a in zip(samples(k / 1200.0), [5e-3] * 3 + [1e-4] * 3)] for k in range(312)]
    dat = b"".join(struct.pack("<II9hH", k, k * 833, *row, 0, 0, 0, 0) for k, row in enumerate(rows))
    return {"swing.CFG": cfg.encode("cp1251"), "swing.DAT": dat}


def segments():
    scale = [4e-3] * 3 + [1e-4] * 3
    names = [(name, "") for name in ("U1", "U2", "U3", "I1", "I2", "I3")]
    cfg = "FEEDER 4,1,1999\r\n6,6A,0D\r\n" + analog(names, UNITS, scale, ["0,0,0,1100,1,S"] * 3 + ["0,0,0,600,5,S"] * 3)
    cfg += "50\r\n3\r\n3200,128\r\n50,134\r\n3200,838\r\n01/01/2020,0:0:0\r\n01/01/2020,0:0:0\r\nBINARY\r\n1\r\n"
    starts = [(0.0, 3200.0, 128), (0.04, 50.0, 6), (0.16, 3200.0, 704)]
    times = [start + k / rate for start, rate, count in starts for k in range(count)]
    dat = b"".join(struct.pack("<II6h", k, int(t * 1e6), *[round(x / a) for x, a in zip(samples(t), scale)])
                   for k, t in enumerate(times, 1))
    return {"segments.cfg": cfg.encode(), "segments.dat": dat}


def single():
    names = [(f"HV {name}", "") for name in ("VR", "VS", "VT", "IR", "IS", "IT")]
    cfg = "FEEDER 5,2,2013\n6,6A,0D\n" + analog(names, UNITS, [1.0] * 6, ["0,-9,9,1,1,P"] * 6, "\n")
    cfg += "50\n1\n1000,300\n27/07/2023,09:19:53.156666511\n27/07/2023,09:19:54.156602167\nFLOAT32\n1\n+9,+9\n0,0\n"
    rows = [(k + 1, (4200000000 + k * 1000000) % 2**32, *samples(k / 1000.0)) for k in range(300)]
    dat = b"".join(struct.pack("<II6f", *row) for row in rows)
    text = f"--- file type: CFG ---\n{cfg}--- file type: INF ---\n--- file type: HDR ---\n"
    return {"single.cff": f"{text}--- file type: DAT FLOAT32: {len(dat)} ---\n".encode() + dat}


def logger():
    text = "Logger;A7\r\nKanäle;6\r\n\r\nTime;Ua;Ub;Uc;Ia;Ib;Ic\r\nms;V;V;V;mA;mA;mA\r\n"
    for k in range(610):
        t = k / 2000.0 + (0.5 if k >= 50 else 0.0)
        cells = [f"{x * f:.4f}" for x, f in zip(samples(t), [1.0] * 3 + [1e3] * 3)]
        cells[3] = "" if k in (40, 41) else cells[3]
        text += ";".join([f"{1e3 * t + 0.1 * math.sin(k * k):.3f}", *cells]).replace(".", ",") + "\r\n"
    return {"logger.csv": text.encode("latin-1")}


for files in (relay(), swing(), segments(), single(), logger()):
    for name, content in files.items():
        (HERE / name).write_bytes(content)
with wave.open(str(HERE / "sound.wav"), "wb") as sound:
    sound.setparams((6, 2, 2000, 0, "NONE", ""))
    for row in (samples(k / 2000.0) for k in range(520)):
        sound.writeframes(struct.pack("<6h", *[round(x / full * 32768.0) for x, full in zip(row, [100] * 3 + [2] * 3)]))
