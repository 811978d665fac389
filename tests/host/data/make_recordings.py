#!/usr/bin/env python3
"""Writes the recordings beside this file: the same load in the ways in which recorders write, traps included.

Ua, Ub, Uc have 57.7 V RMS with 3 % of the fifth harmonic, Ia, Ib, Ic 1.2 A, 30 degrees behind; README.md has the rest.
"""

import math
import os
import struct
import wave

here = os.path.dirname(os.path.abspath(__file__))
SQRT2 = math.sqrt(2.0)


def sample(channel, t, hz):
    """Channel 0..5 at time t."""
    theta = 2.0 * math.pi * (hz * t - (channel % 3) / 3.0)
    if channel < 3:
        return 57.7 * SQRT2 * (math.sin(theta) + 0.03 * math.sin(5.0 * theta))
    return 1.2 * SQRT2 * math.sin(theta - math.pi / 6.0)


def write(name, content):
    with open(os.path.join(here, name), "wb") as file:
        file.write(content)


def analog(number, name, phase, unit, a, rest):
    return f"{number},{name},{phase},,{unit},{a:.9g},0,{rest}\r\n"


def relay():
    """1991, ASCII, instantaneous values divided by sqrt(2), and a header that quotes RMS values."""
    names = ["VA(kV)", "VB(kV)", "VC(kV)", "IA", "IB", "IC"]
    scale = [1e-6] * 3 + [1e-4] * 3
    unit = ["kV"] * 3 + ["A"] * 3
    cfg = "FEEDER 3,0\r\n8,6A,2D\r\n"
    for i in range(6):
        cfg += analog(i + 1, names[i], "", unit[i], scale[i], "0,0,999900")
    cfg += "1,*,0\r\n2,*,0\r\n60\r\n1\r\n960,96\r\n02/12/11,11:41:11.081315\r\n02/12/11,11:41:11.147000\r\nASCII\r\n"
    dat = ""
    for k in range(96):
        raw = [sample(i, k / 960.0, 60.0) / SQRT2 * (1e-3 if i < 3 else 1.0) / scale[i] for i in range(6)]
        dat += f"{k + 1:10d},{k * 1000000 // 960:10d}," + ",".join(f"{x:6.0f}" for x in raw) + ",0,1\r\n"
    write("relay.cfg", cfg.encode())
    write("relay.dat", dat.encode() + b"\x1a")
    write("relay.hdr", b"Summary Data:\r\nFREQ = 60.00\r\nIA = 1.2\r\nIB = 1.2\r\nIC = 1.2\r\n")


def swing():
    """1999, BINARY, windows-1251, two groups of currents, a scanning converter, one sample more than announced."""
    busbar = "шина_110кВ"
    names = [f"{'UUUIII'[i]}{'abc'[i % 3]}_{busbar}" for i in range(6)] + [f"I{p}_ВЛ2" for p in "abc"]
    cfg = "Подстанция,576,1999\r\n10,9A,1D\r\n"
    for i, name in enumerate(names):
        unit, a, ratio = ("kV", 5e-6, "1100,1,P") if i < 3 else ("A", 1e-4, "60,1,P")
        cfg += analog(i + 1, name, "ABC"[i % 3], unit, a, f"{13 * i},-32767,32767,{ratio}")
    cfg += "1,Пуск,,,0\r\n50\r\n1\r\n1200,311\r\n22/08/2016,16:04:22.0\r\n22/08/2016,16:04:23.5\r\nBINARY\r\n1\r\n"
    dat = b""
    for k in range(312):
        x = [sample(i, k / 1200.0, 50.0) for i in range(6)]
        raw = [round(v / 5e-3) for v in x[:3]] + [round(v / 1e-4) for v in x[3:]] + [0, 0, 0]
        dat += struct.pack("<II9hH", k, k * 833, *raw, 0)
    write("swing.CFG", cfg.encode("cp1251"))
    write("swing.DAT", dat)


def segments():
    """1999, BINARY, 3200 Hz with a stretch at 50 Hz between; secondary values."""
    cfg = "FEEDER 4,1,1999\r\n6,6A,0D\r\n"
    for i in range(6):
        ratio = "1100,1,S" if i < 3 else "600,5,S"
        cfg += analog(i + 1, f"{'UI'[i // 3]}{i % 3 + 1}", "", "VA"[i // 3], 4e-3 if i < 3 else 1e-4, f"0,0,0,{ratio}")
    cfg += "50\r\n3\r\n3200,128\r\n50,134\r\n3200,838\r\n01/01/2020,0:0:0\r\n01/01/2020,0:0:0\r\nBINARY\r\n1\r\n"
    dat = b""
    start = [(0, 0.0, 3200.0), (128, 0.04, 50.0), (134, 0.16, 3200.0)]
    for k in range(838):
        first, begin, rate = [s for s in start if s[0] <= k][-1]
        t = begin + (k - first) / rate
        raw = [round(sample(i, t, 50.0) / (4e-3 if i < 3 else 1e-4)) for i in range(6)]
        dat += struct.pack("<II6h", k + 1, int(t * 1e6), *raw)
    write("segments.cfg", cfg.encode())
    write("segments.dat", dat)


def single():
    """2013, one file, FLOAT32, stamps in nanoseconds that wrap, phases R, S, T."""
    cfg = "FEEDER 5,2,2013\n6,6A,0D\n"
    for i in range(6):
        cfg += analog(i + 1, f"HV {'VI'[i // 3]}{'RST'[i % 3]}", "", "VA"[i // 3], 1.0, "0,-9,9,1,1,P").replace("\r", "")
    cfg += "50\n1\n1000,300\n27/07/2023,09:19:53.156666511\n27/07/2023,09:19:54.156602167\nFLOAT32\n1\n+9,+9\n0,0\n"
    dat = b""
    for k in range(300):
        stamp = (4200000000 + k * 1000000) % 2**32
        dat += struct.pack("<II6f", k + 1, stamp, *[sample(i, k / 1000.0, 50.0) for i in range(6)])
    text = f"--- file type: CFG ---\n{cfg}--- file type: INF ---\n--- file type: HDR ---\n"
    write("single.cff", f"{text}--- file type: DAT FLOAT32: {len(dat)} ---\n".encode() + dat)


def logger():
    """CSV with a preamble, units, decimal commas, jittering stamps, a gap and empty cells."""
    text = "Logger;A7\r\nKanäle;6\r\n\r\nZeit;".replace("Zeit", "Time") + "Ua;Ub;Uc;Ia;Ib;Ic\r\n"
    text += "ms;V;V;V;mA;mA;mA\r\n"
    for k in range(610):
        t = k / 2000.0 + (0.5 if k >= 50 else 0.0)
        stamp = 1e3 * t + 0.1 * math.sin(k * k)
        cells = [f"{stamp:.3f}"] + [f"{sample(i, t, 50.0) * (1.0 if i < 3 else 1e3):.4f}" for i in range(6)]
        if k in (40, 41):
            cells[4] = ""
        text += ";".join(cells).replace(".", ",") + "\r\n"
    write("logger.csv", text.encode("latin-1"))


def sound():
    """Six channels of 16 bits, relative to full scale: 100 V and 2 A."""
    with wave.open(os.path.join(here, "sound.wav"), "wb") as file:
        file.setnchannels(6)
        file.setsampwidth(2)
        file.setframerate(2000)
        for k in range(520):
            full = [100.0] * 3 + [2.0] * 3
            raw = [round(sample(i, k / 2000.0, 50.0) / full[i] * 32768.0) for i in range(6)]
            file.writeframes(struct.pack("<6h", *raw))


for make in (relay, swing, segments, single, logger, sound):
    make()
