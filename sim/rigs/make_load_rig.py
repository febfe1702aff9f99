#!/usr/bin/env python3
"""Writes load255.json: the first port of default.json with 255 responders on its RDM line.

The responders are a hall full of small fixtures from five makers: runs of consecutive serial
numbers (as a rental stock is bought) mixed with scattered ones. The output is fixed for a given
seed, so the file only changes when this script does.

    python3 sim/rigs/make_load_rig.py            # writes sim/rigs/load255.json
"""

import json
import os
import random

HERE = os.path.dirname(os.path.abspath(__file__))
SEED = 20250314
COUNT = 255

MAKERS = [
    (0x7FF1, "Corvid Lightworks", "Rook 150 Wash", 0x0150, 0x0102, "Wash"),
    (0x7FF3, "Lumenfold", "Lumenfold Par 7x15 RGBW", 0x0715, 0x0101, "Par"),
    (0x7FF6, "Gannet Stage", "Gannet Batten 8", 0x0B08, 0x0101, "Batten"),
    (0x7FF2, "Halden Power Systems", "HPS 4x1 kW pack", 0x0401, 0x0501, "Pack"),
    (0x7FF8, "Tamsin Effects", "Tamsin Flash 3000", 0x3000, 0x0103, "Strobe"),
]


def responder(rng, index, uid, maker):
    esta, name, model, model_id, category, word = maker
    footprint = rng.choice([2, 4, 6, 8])
    entry = {
        "uid": "%04X:%08X" % (esta, uid & 0xFFFFFFFF),
        "label": "%s %03d" % (word, index + 1),
        "manufacturer": name,
        "model": model,
        "model_id": "0x%04X" % model_id,
        "category": "0x%04X" % category,
        "software_version": "1.%d.%d" % (rng.randrange(10), rng.randrange(20)),
        "personalities": [
            {"footprint": footprint, "description": "Standard %dch" % footprint},
            {"footprint": footprint // 2, "description": "Compact %dch" % (footprint // 2)},
        ],
        "start_address": 1 + (index * 2) % 511,
        "device_hours": rng.randrange(20000),
    }
    if index % 4 == 0:
        entry["sensors"] = [{
            "type": 0, "unit": 1, "range": [-20, 120], "normal": [0, 70],
            "description": "Temperature", "value": rng.randrange(25, 60), "drift": 0.3,
        }]
    if esta == 0x7FF2:
        entry["sub_devices"] = [{"count": 4, "label": "Channel %d", "footprint": 1, "start_address": 1}]
    return entry


def main():
    rng = random.Random(SEED)
    with open(os.path.join(HERE, "default.json"), encoding="utf-8") as source:
        rig = json.load(source)
    port = rig["ports"][0]
    port["name"] = "ZOL USB 1"

    uids = set()
    responders = []
    while len(responders) < COUNT:
        maker = rng.choice(MAKERS)
        if rng.random() < 0.6:
            # A run of consecutive serial numbers.
            start = rng.randrange(1, 0x00400000)
            run = rng.randrange(3, 25)
            serials = [start + n for n in range(run)]
        else:
            serials = [rng.randrange(1, 0xFFFFFFFE)]
        for serial in serials:
            uid = (maker[0] << 32) | serial
            if uid in uids or len(responders) >= COUNT:
                continue
            uids.add(uid)
            responders.append(responder(rng, len(responders), uid, maker))
    port["responders"] = responders

    out = {
        "name": "Load: 255 responders on one line",
        "time_scale": rig.get("time_scale", 1.0),
        "ports": [port],
    }
    lines = ["{"]
    lines.append('  "name": %s,' % json.dumps(out["name"]))
    lines.append('  "time_scale": %s,' % json.dumps(out["time_scale"]))
    lines.append('  "ports": [')
    lines.append("    {")
    keys = list(port.keys())
    for k, key in enumerate(keys):
        comma = "," if k + 1 < len(keys) else ""
        if key == "responders":
            lines.append('      "responders": [')
            for r, entry in enumerate(responders):
                tail = "," if r + 1 < len(responders) else ""
                lines.append("        " + json.dumps(entry, ensure_ascii=False) + tail)
            lines.append("      ]" + comma)
        else:
            lines.append("      %s: %s%s" % (json.dumps(key), json.dumps(port[key]), comma))
    lines.append("    }")
    lines.append("  ]")
    lines.append("}")
    with open(os.path.join(HERE, "load255.json"), "w", encoding="utf-8") as target:
        target.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
