"""What a finished run left in its directory, for the scripts that print tables of it.

Needs nothing but Python's own library. Files are read as the program reads them as far as these
scripts need it: fields between blanks or commas, one title line.
"""
import re
from pathlib import Path

FILES = """control Grid Weather Patch PatchIndex TreePatch FormFactor Sun BldSurf SurfProp LAD_simple
LAD WaterTemp MatEleProp Building RmHeat StHeat SurfTemp PatchSurfTemp ProgressLog SunSky heat
PgidPrd restart Porous BldLoad""".split()


def rows(path, titles=1):
    """The rows of fields of a text file, behind its title lines."""
    with open(path) as file:
        for number, line in enumerate(file):
            if number >= titles and line.strip():
                yield line.replace(",", " ").split()


def number(field):
    return float(field.upper().replace("D", "E"))


def brightness(radiosity):
    """Temperature [deg C] of a black body of this long-wave radiosity [W/m2]."""
    return (radiosity / 5.6704e-8) ** 0.25 - 273.15


class RunDirectory:
    def __init__(self, folder):
        self.folder = Path(folder)
        text = (self.folder / "file_name").read_text()
        self.names = dict(zip(FILES, (line.rstrip() for line in text.splitlines())))
        self.dated = re.search(r"&DIR_NAME(.*?)^\s*/", text, re.S | re.M | re.I)

    def path(self, kind):
        """An input file, or a result file of a repeating day."""
        return self.folder / self.names[kind]

    def month_path(self, kind, month):
        """A file of a dated run's month."""
        def part(member):
            found = re.search(rf"\b{member}\s*=\s*'([^']*)'", self.dated.group(1), re.I)
            return found.group(1).strip().rstrip("/") if found else ""
        base, prefix = part("BASE"), part("MON")
        return self.folder / base / (f"{prefix}{month:02d}" if prefix else "") / self.names[kind]

    def member(self, group, name, default):
        """The numbers of a member of a group of the control file."""
        found = re.search(rf"&{group}\b(.*?)^\s*/", self.path("control").read_text(),
                          re.S | re.M | re.I)
        found = found and re.search(rf"\b{name}\s*=\s*([-+0-9.,\s]*)", found.group(1), re.I)
        return [number(v) for v in found.group(1).replace(",", " ").split()] if found else default

    def days(self, kind):
        """The result files of one kind: (title, month, file); one, or one a month."""
        if not self.dated:
            yield "the last day of the run", None, self.path(kind)
            return
        for month in range(1, 13):
            path = self.month_path(kind, month)
            if path.exists():
                yield f"the mean day of month {month}", month, path

    def patches(self):
        """PID -> (kind, area); kinds are roof, wall, road, water, panel, far."""
        lines = [[number(f) for f in row[:11]] for row in rows(self.path("Patch"))]
        ground = min((row[3] for row in lines), default=0)
        named = {4: "water", 5: "panel", 7: "far"}
        kinds = {}
        for pid, _, _, k, area, _, _, up, kind, *_ in lines:
            low = k == ground and kind != 1  # low houses have roofs in the lowest cells
            name = "wall" if up < 0.5 else "road" if low else "roof"
            kinds[int(pid)] = (named.get(int(kind), name), area)
        return kinds

    def crowns(self):
        """PID -> ("crown", area) of the faces of crowns. They have no temperature of their own (the
        results show what they began with): their radiosity tells it."""
        return {int(row[0]): ("crown", number(row[4])) for row in rows(self.path("TreePatch"))}

    def sun(self, month):
        """hour -> mean (direct, scattered, long-wave), and the (month, day)s that it covers."""
        sums, days = {}, set()
        for row in rows(self.path("SunSky")):
            values = [number(f) for f in row]
            if self.dated and int(values[0]) != month:
                continue
            if self.dated:
                days.add((int(values[0]), int(values[1])))
            hour = int(values[-4])
            old = sums.get(hour) if self.dated else None
            count, *old = old or (0, 0.0, 0.0, 0.0)
            sums[hour] = (count + 1, *(a + b for a, b in zip(old, values[-3:])))
        return {h: tuple(v / n for v in total) for h, (n, *total) in sums.items()}, days

    def air(self, days):
        """hour -> mean air temperature, deg C, of the weather lines that these days meet."""
        first, last = (int(v) for v in self.member("TSRF_WEATHER", "LDATE", [4, 4]))
        sums = {}
        for row in rows(self.path("Weather")):
            date = dict(zip(range(first, last + 1), (int(f) for f in row)))
            if days and not any(date.get(2, m) == m and date.get(3, d) == d for m, d in days):
                continue
            count, total = sums.get(date.get(4), (0, 0.0))
            sums[date.get(4)] = (count + 1, total + number(row[last - first + 1]))
        return {h: total / n for h, (n, total) in sums.items()}
