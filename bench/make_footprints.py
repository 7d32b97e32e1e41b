#!/usr/bin/env python3
"""Writes the footprints of a made-up town: make_footprints.py FILE.geojson [BUILDINGS]

Blocks of ten lots of 12 m in two rows, with streets of 16 m between them. Most houses are 10 to 13 m
deep and stand wall to wall; some lots are empty, some have a wing towards the back, and every
seventh block is one building around a courtyard. Heights are 6 to 18 m. Always the same numbers for
the same count (500 as given).
"""
import json
import random
import sys

LOTS, WIDE, DEEP, STREET = 5, 12.0, 30.0, 16.0


def box(x, y, width, depth):
    return [[x, y], [x + width, y], [x + width, y + depth], [x, y + depth], [x, y]]


def block(x, y, number, chance):
    """Rings of the buildings of a block."""
    if number % 7 == 6:
        yield [box(x, y, LOTS * WIDE, DEEP), box(x + 12.0, y + 11.0, LOTS * WIDE - 24.0, DEEP - 22.0)]
        return
    for lot in range(LOTS):
        for back in (False, True):
            if chance.random() < 0.06:
                continue
            depth = 10.0 + 3.0 * chance.random()
            at, far = x + lot * WIDE, y + DEEP - depth if back else y
            if chance.random() < 0.3 and not back:  # a wing of half the width, 2 m deep
                ring = box(at, far, WIDE, depth)
                half = at + 0.5 * WIDE
                yield [ring[:2] + [[at + WIDE, far + depth], [half, far + depth],
                                   [half, far + depth + 2.0], [at, far + depth + 2.0], ring[0]]]
            else:
                yield [box(at, far, WIDE, depth)]


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    wanted = int(sys.argv[2]) if len(sys.argv) == 3 else 500
    chance = random.Random(1)
    side = max(1, round((wanted / 8.5) ** 0.5 * 0.8))  # blocks along x
    features, number = [], 0
    while len(features) < wanted:
        x = 500000.0 + (number % side) * (LOTS * WIDE + STREET)
        y = 5700000.0 + (number // side) * (DEEP + STREET)
        for rings in block(x, y, number, chance):
            if len(features) == wanted:
                break
            height = round(6.0 + 12.0 * chance.random() ** 2, 1)
            features.append({"type": "Feature", "id": f"b{len(features) + 1}",
                             "properties": {"height": height},
                             "geometry": {"type": "Polygon", "coordinates": rings}})
        number += 1
    crs = {"type": "name", "properties": {"name": "EPSG:25832"}}
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        json.dump({"type": "FeatureCollection", "crs": crs, "features": features}, file)


main()
