"""Reports of made-up machines, in the form that a page holds: one that is good to look at, and one of
many rows."""

import random

GIB = 1 << 30
MIB = 1 << 20
CATEGORIES = ["Archives", "Documents", "Images", "Media files", "Other"]

# Folder, names with {} for a number, how many, from and to how many MiB, category, years.
PROFILE = [
    ("Videos\\Captures", "Capture 2026-{:02}-1{}.mp4", 10, 380, 2900, 3, (2025, 2026)),
    ("Videos\\Films", "Northwind holiday {}.mkv", 6, 1900, 5200, 3, (2022, 2025)),
    ("Videos\\Phone", "VID_2024{:02}2{}.mov", 22, 90, 740, 3, (2023, 2025)),
    ("Music\\Lossless", "Album {} side {}.flac", 30, 24, 46, 3, (2017, 2022)),
    ("Pictures\\Camera\\2025", "DSC_{}{}.dng", 46, 26, 58, 2, (2025, 2025)),
    ("Pictures\\Camera\\2024", "DSC_{}{}.dng", 31, 26, 58, 2, (2024, 2024)),
    ("Pictures\\Posters", "poster-{}.psd", 9, 120, 910, 2, (2023, 2026)),
    ("Documents\\Contoso\\Offers", "Offer {} final.pdf", 7, 12, 88, 1, (2021, 2026)),
    ("Documents\\Contoso\\Archive", "mail-201{}-q{}.pst", 5, 700, 2600, 4, (2018, 2022)),
    ("Documents\\Theses", "Thesis draft {}.docx", 4, 14, 60, 1, (2019, 2020)),
    ("Documents\\Virtual machines\\Debian", "debian-{}.vdi", 2, 4200, 9800, 4, (2024, 2026)),
    ("Documents\\Virtual machines\\Lab", "lab-s00{}.vmdk", 5, 1500, 2048, 4, (2023, 2025)),
    ("Downloads", "setup-{}.{}.zip", 11, 40, 620, 0, (2023, 2026)),
    ("Downloads", "fabrikam-tools-{}.iso", 3, 900, 4400, 0, (2022, 2026)),
    ("Downloads\\Course", "lecture {}.mp4", 12, 110, 480, 3, (2024, 2025)),
    ("Desktop\\Backup", "phone-{}.tar.gz", 4, 1100, 3800, 0, (2022, 2026)),
    ("Source\\quadtree\\out", "trace-{}{}.bin", 16, 30, 260, 4, (2025, 2026)),
    ("Source\\atlas\\.cache\\tiles", "z{}-{}.pack", 26, 18, 130, 4, (2024, 2026)),
]


def _time(random_numbers, years):
    return (f"{random_numbers.randint(*years)}-{random_numbers.randint(1, 10):02}-"
            f"{random_numbers.randint(1, 28):02}T{random_numbers.randint(7, 22):02}:"
            f"{random_numbers.randint(0, 59):02}:{random_numbers.randint(0, 59):02}")


class _Folders:
    def __init__(self):
        self.names = []
        self.places = {}

    def place(self, name):
        if name not in self.places:
            self.places[name] = len(self.names)
            self.names.append(name)
        return self.places[name]


def _large(roots, rows, folders, seen, performance):
    groups = []
    places = {}
    for row in rows:
        if row[4] not in places:
            places[row[4]] = None
    for number, category in enumerate(sorted(places)):
        own = [row for row in rows if row[4] == category]
        places[category] = number
        groups.append({"title": CATEGORIES[category], "count": len(own),
                       "bytes": sum(row[2] for row in own)})
    for row in rows:
        row[4] = places[row[4]]
    rows.sort(key=lambda row: -row[2])
    total = sum(row[2] for row in rows)
    return {
        "page_version": 1, "client_version": "0.4.0", "library_version": "0.4.0", "command": "large",
        "roots": roots,
        "options": {"sort": "size", "top": None, "protect": True, "system_root": "C:\\",
                    "user_home": "C:\\Users\\ann"},
        "start_time": "2026-11-21T09:14:07.120Z", "status": "ok",
        "totals": {"files_visited": seen[0], "bytes_visited": total + seen[1],
                   "item_count": len(rows), "total_bytes": total},
        "performance": performance, "groups": groups,
        "columns": ["folder", "name", "size", "modified", "group"], "rows": rows,
        "folders": folders.names, "exact": [],
    }


def profile():
    """The large files of a profile of some years."""
    numbers = random.Random(7)
    folders = _Folders()
    rows = []
    for folder, name, count, least, most, category, years in PROFILE:
        taken = set()
        for number in range(count):
            text = name.format(number + 1, numbers.randint(1, 4))
            if text in taken:
                continue
            taken.add(text)
            size = int(numbers.uniform(least, most) * MIB) + numbers.randint(0, MIB)
            rows.append([folders.place("C:\\Users\\ann\\" + folder), text, size,
                         _time(numbers, years), category])
    return _large(["C:\\Users\\ann"], rows, folders, (184_302, 61 * GIB),
                  {"elapsed_us": 3_420_118, "filter_roots_us": 6, "walk_us": 3_394_870})


def many(count=100_000):
    """Many rows in thousands of folders, of ascending size."""
    numbers = random.Random(11)
    folders = _Folders()
    rows = []
    for number in range(count):
        place = number % 4000
        folder = f"D:\\data\\{place % 20:02}\\{place // 20 % 20:02}\\{place // 400:02}"
        rows.append([folders.place(folder), f"file {number:06}.bin", 10 * MIB + 1 + number,
                     _time(numbers, (2015, 2026)), number % len(CATEGORIES)])
    return _large(["D:\\data"], rows, folders, (2 * count, GIB),
                  {"elapsed_us": 9_000_000, "filter_roots_us": 3, "walk_us": 8_900_000})
