#!/usr/bin/env python3
"""Draw the air of a street as street_air.py left it.

usage: street_air_picture.py RUN_DIRECTORY HOUR OUTPUT.svg

Two sections, one above the other: the upright one through the middle of the street and the lowest
layer from above. Colours: temperature over the weather station's; arrows: wind.
"""
import sys
from pathlib import Path

from run_directory import rows
from street_air import Air, Station, nodes

SCALE = 5.0            # units per m
MARGIN = 40.0
ARROW = 1.6            # m of arrow per kg/m2 s
FIRST, LAST = -22.0, 102.0  # m, part of y that is shown
TOP = 42.0             # m
MIDDLE, GROUND = 10, 1  # i of the upright section, k of the other
HOTTEST = 4.0          # K
STOPS = ((255, 255, 255), (254, 217, 118), (240, 80, 40), (110, 0, 40))


def colour(excess):
    at = min(max(excess / HOTTEST, 0.0), 1.0) * (len(STOPS) - 1)
    low = min(int(at), len(STOPS) - 2)
    mixed = (a + (at - low) * (b - a) for a, b in zip(STOPS[low], STOPS[low + 1]))
    return "#" + "".join(f"{round(v):02x}" for v in mixed)


class Panel:
    """A section: its cells along two axes, and where they stand in the drawing."""

    def __init__(self, across, up, base):
        self.across, self.up, self.base = across, up, base
        self.parts = []

    def corner(self, a, b):
        return MARGIN + (a - FIRST) * SCALE, self.base - (b - self.up[0]) * SCALE

    def cell(self, m, n, fill):
        x, y = self.corner(self.across[m - 1], self.up[n])
        width = (self.across[m] - self.across[m - 1]) * SCALE
        height = (self.up[n] - self.up[n - 1]) * SCALE
        self.parts.append(
            f'<rect x="{x:.0f}" y="{y:.0f}" width="{width:.0f}" height="{height:.0f}" fill="{fill}"/>')

    def arrow(self, m, n, u, v):
        x, y = self.corner(0.5 * (self.across[m - 1] + self.across[m]),
                           0.5 * (self.up[n - 1] + self.up[n]))
        a, b = x + u * ARROW * SCALE, y - v * ARROW * SCALE
        self.parts.append(f'<path d="M{x:.0f} {y:.0f}L{a:.0f} {b:.0f}"/>')


def draw(panel, cells, filled, value, wind):
    shown = [(m, n) for m, n in cells
             if panel.across[m - 1] >= FIRST and panel.across[m] <= LAST]
    for m, n in shown:
        panel.cell(m, n, "#777" if filled(m, n) else colour(value(m, n)))
    panel.parts.append('<g stroke="#235" fill="none" marker-end="url(#tip)">')
    for m, n in shown:
        if not filled(m, n):
            panel.arrow(m, n, *wind(m, n))
    panel.parts.append("</g>")


def key(x, y):
    parts = []
    for step in range(11):
        excess = HOTTEST * step / 10
        parts.append(f'<rect x="{x + 24 * step}" y="{y}" width="24" height="12" '
                     f'fill="{colour(excess)}"/>')
    for excess in (0.0, HOTTEST / 2, HOTTEST):
        place = x + 12 + 240 * excess / HOTTEST
        parts.append(f'<text x="{place:.0f}" y="{y + 26}" text-anchor="middle">{excess:g} K</text>')
    return parts


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    folder, hour = Path(sys.argv[1]), int(sys.argv[2])
    x, y, z = nodes(folder)
    air = Air(folder / f"flow_{hour:02d}")
    station = Station(folder / "Weather_station.txt").temperature(hour) + 273.15
    solid = {tuple(int(v) for v in row[:3]) for row in rows(folder / "Porous.txt", titles=0)}
    layers = [n for n in range(1, len(z)) if z[n] <= TOP]
    upright = Panel(y, z, MARGIN + TOP * SCALE)
    draw(upright, [(j, k) for k in layers for j in range(1, len(y))],
         lambda j, k: (MIDDLE, j, k) in solid,
         lambda j, k: air.temperature(MIDDLE, j, k) - station,
         lambda j, k: (air.flux(1, MIDDLE, j, k), air.flux(2, MIDDLE, j, k)))
    above = Panel(y, x, upright.base + 50 + x[-1] * SCALE)
    draw(above, [(j, i) for i in range(1, len(x)) for j in range(1, len(y))],
         lambda j, i: (i, j, GROUND) in solid,
         lambda j, i: air.temperature(i, j, GROUND) - station,
         lambda j, i: (air.flux(1, i, j, GROUND), air.flux(0, i, j, GROUND)))
    width = 2 * MARGIN + (LAST - FIRST) * SCALE
    text = [f'<text x="{MARGIN}" y="{MARGIN - 12}">across the street at {hour} h: air over the '
            "weather station's, wind from the left</text>",
            f'<text x="{MARGIN}" y="{upright.base + 38}">the lowest 3 m from above</text>']
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width:.0f} '
             f'{above.base + 60:.0f}" font-family="sans-serif" font-size="13">',
             '<defs><marker id="tip" orient="auto" markerWidth="5" markerHeight="5" refX="4" '
             'refY="2.5"><path d="M0 0L5 2.5L0 5" fill="none" stroke="#235"/></marker></defs>',
             '<rect width="100%" height="100%" fill="#fff"/>', *text, *upright.parts, *above.parts,
             *key(MARGIN, above.base + 16), "</svg>"]
    Path(sys.argv[3]).write_text("\n".join(lines) + "\n")


main()
