"""Holds the tool's answers on a generated fleet against what was done to it, and against NumPy and SciPy.

    fleet-test.py TOOL GENERATOR
"""

import json
import os
import re
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
from collections import Counter, defaultdict

import numpy as np
from scipy import stats

tool, generator = (os.path.realpath(path) for path in sys.argv[1:3])
failures = []


def check(what, is_so, detail=""):
    if not is_so:
        failures.append(what)
        print(f"FAILED: {what} {str(detail)[:1000]}")


def run(*arguments, status=0, program=None):
    done = subprocess.run([program or tool, *arguments], capture_output=True, text=True)
    check(f"{' '.join(arguments)}: status {done.returncode}, expected {status}", done.returncode == status, done.stderr)
    return done


def ask(*arguments, status=0):
    return json.loads(run("fleet", "fleet.sqlite", *arguments, "--json", status=status).stdout)


def sound(database):
    with sqlite3.connect(database) as opened:
        return opened.execute("PRAGMA integrity_check").fetchall() == [("ok",)]


def contents(database):
    """Everything but when it was read, and by which number an image or an axis goes."""
    with sqlite3.connect(database) as opened:
        images = opened.execute("SELECT path, content_hash, module, problems FROM images ORDER BY path").fetchall()
        curves = opened.execute(
            "SELECT path, block, field, row, axis_values, point_values FROM curves JOIN images USING (image) "
            "ORDER BY path, block, field, row").fetchall()
        others = [opened.execute(f"SELECT path, count(*) FROM {name} JOIN images USING (image) GROUP BY 1 ORDER BY 1")
                  .fetchall() for name in ("blocks", "scalars")]
    return images, curves, others


def values_of(key, field):
    """Of each row and label the values of the modules, with their serial numbers, by plain SQL."""
    with sqlite3.connect("fleet.sqlite") as opened:
        found = defaultdict(list)
        for row, axis, points, step, serial in opened.execute(
                "SELECT row, axis_values, point_values, step, serial_number FROM curves JOIN latest USING (image) "
                "WHERE key = ? AND field = ?", (key, field)):
            axis, points = json.loads(axis), json.loads(points)
            labels = axis if len(axis) == len(points) else range(len(points))
            seen = Counter()
            for label, value in zip(labels, points):
                found[row, float(label), seen[label]].append((serial, value, step))
                seen[label] += 1
    return found


def test_outliers(truth):
    planted = defaultdict(dict)
    for one in truth["outliers"]:
        planted[one["key"]][os.path.realpath("images/" + one["file"])] = one
    check("some are planted", len(planted) >= 8, planted.keys())
    drifting = {one["key"] for one in truth["drifts"]}
    for key in sorted(set(planted) | drifting):
        answer = ask("outliers", "--block", key)
        found = Counter(one["image"] for one in answer["outliers"])
        expected = {path: len(one["elements"]) for path, one in planted[key].items()}
        check(f"the outliers of {key}", found == expected, (found, expected))
        field = next((one["field"] for one in truth["outliers"] if one["key"] == key), None)
        values = values_of(key, field) if field else {}
        for one in answer["outliers"]:
            label = one["axis_value"] if one["axis_value"] is not None else one["point"]
            candidates = [values[one["row"], label, same] for same in range(3) if (one["row"], label, same) in values]
            here = [group for group in candidates if (one["serial_number"], one["value"]) in [(s, v) for s, v, _ in group]]
            check(f"a value of {key}", here, one)
            for group in here[:1]:
                numbers = np.array([value for _, value, _ in group])
                sigma = max(1.4826 * stats.median_abs_deviation(numbers), group[0][2])
                check(f"median of {key}", np.isclose(one["median"], np.median(numbers), rtol=1e-12), one)
                check(f"sigma of {key}", np.isclose(one["sigma"], sigma, rtol=1e-12), (one, sigma))
                check(f"sigmas of {key}", np.isclose(one["sigmas"], (one["value"] - np.median(numbers)) / sigma), one)


def page(*arguments, status=0):
    """The documents of a page: the head, and the blocks."""
    run("fleet", "fleet.sqlite", *arguments, "--report", "page.html", status=status)
    with open("page.html", encoding="utf-8") as file:
        found = re.findall(r'<script type="application/json" id="([a-z0-9-]+)">(.*?)</script>', file.read(), re.S)
    documents = {name: json.loads(text) for name, text in found}
    return documents.pop("head-data"), list(documents.values())


def test_pages(truth):
    for key in ("RFBO_EXTIN_GAIN", "POK_DCON_VTRIM_VALUE"):
        head, blocks = page("outliers", "--block", key)
        odd = {head["sources"][block["places"][place]["source"]]["name"]
               for block in blocks for table in block["tables"] for place in table.get("odd", [])}
        expected = {os.path.realpath("images/" + one["file"]) for one in truth["outliers"] if one["key"] == key}
        check(f"the page of {key}", len(blocks) == 1 and odd == expected, (odd, expected))
        curves = blocks[0]["tables"][0]["curves"]
        values = values_of(key, "values")
        check("a page's median", [np.median([value for _, value, _ in values[0, label, 0]]) for label in
                                  sorted(at for row, at, _ in values if row == 0)] == curves[0]["spread"]["median"],
              curves[0]["spread"])
    head, blocks = page("trend", "--field", "values", "--block", "RFBO_ALC_DATA", "--at", "3 GHz", "--row", "1")
    tables = {table["name"] for block in blocks for table in block["tables"]}
    check("the page of a trend", any(name.endswith("at 3 GHz") for name in tables) and "values" in tables, tables)
    head, blocks = page("wear")
    check("the page of wear", [block["fields"][0]["name"] for block in blocks] == ["operating_hours"], head["title"])
    head, blocks = page("verify", status=1)
    check("the page of damage", not blocks and len(head["sources"]) == len(truth["damaged"]), head["title"])


def test_trends(truth):
    checked = 0
    for drift in truth["drifts"]:
        key, field = drift["key"], drift["field"]
        answer = ask("trend", "--block", key, "--field", field)
        values = values_of(key, field)
        sure = 0
        for one in answer["trends"][::max(1, len(answer["trends"]) // 50)]:
            label = one["axis_value"] if one["axis_value"] is not None else one["point"]
            if (one["row"], label, 1) in values:
                continue  # another point has the same label
            serials, numbers, _ = map(np.array, zip(*values[one["row"], label, 0]))
            expected = stats.theilslopes(numbers, serials)
            for name, number in zip(("slope", "intercept", "slope_low", "slope_high"), expected):
                check(f"{name} of {key}", np.isclose(one[name], number, rtol=1e-7, atol=1e-12), (one, expected))
            sure += one["slope_low"] > 0 or one["slope_high"] < 0
            checked += 1
        # Some elements are too near 0 to be varied; of the others the drift is found.
        check(f"the drift of {key} is found", sure > 0, answer["trends"][:2])
    check("trends were compared", checked > 100, checked)
    at = ask("trend", "--block", "RFBO_ALC_DATA", "--field", "values", "--at", "3 GHz", "--row", "1")["trends"]
    check("one point by frequency", [(one["row"], one["axis_value"]) for one in at] == [(1, 3e9)], at)
    run("fleet", "fleet.sqlite", "trend", "--field", "nix", status=1)
    run("fleet", "fleet.sqlite", "trend", "--field", "values", "--at", "3 parsecs", status=2)


def test_damage(truth):
    answer = ask("verify", status=1)
    expected = {os.path.realpath("images/" + one["file"]): one["how"] for one in truth["damaged"]}
    found = {one["image"]: one["problems"] for one in answer["damaged"]}
    check("the damaged images", found.keys() == expected.keys(), set(found) ^ set(expected))
    for path, how in expected.items():
        check(path, (how == "checksum") == any("wrong checksum" in one for one in found.get(path, [])), found.get(path))


def test_wear(truth):
    worn = [os.path.realpath("images/" + file) for file in truth["worn"]]
    answer = [one for one in ask("wear")["wear"] if one["counter"].startswith("sattc_high_power")]
    check("the worn modules come first", worn and sorted(one["image"] for one in answer[:len(worn)]) == sorted(worn) and
          answer[len(worn)]["value"] < 1000, answer[:3])


some = ("images/rf-board", "images/dac-board", "images/step-attenuator")


def test_kill():
    """A run that is killed leaves a sound database, and the next one completes it."""
    run("collect", *some, "--into", "some.sqlite", status=1)
    for delay in (0.05, 0.2, 0.4):
        for name in ("killed.sqlite", "killed.sqlite-journal"):
            if os.path.exists(name):
                os.remove(name)
        process = subprocess.Popen([tool, "collect", *some, "--into", "killed.sqlite"], stderr=subprocess.DEVNULL)
        time.sleep(delay)
        process.send_signal(signal.SIGKILL if delay < 0.3 else signal.SIGINT)
        process.wait()
        if os.path.exists("killed.sqlite"):
            check("killed, yet sound", sound("killed.sqlite"))
        run("collect", *some, "--into", "killed.sqlite", status=1)
        check("killed, then completed", contents("killed.sqlite") == contents("some.sqlite"))


def test_two_at_once():
    """Two runs at once bring what one would have brought."""
    both = [subprocess.Popen([tool, "collect", *some, "--into", "both.sqlite"], stderr=subprocess.PIPE, text=True)
            for _ in range(2)]
    texts = [process.communicate()[1] for process in both]
    check("two at once end", [process.returncode for process in both] == [1, 1], texts)
    check("two at once are sound", sound("both.sqlite"))
    check("two at once are one", contents("both.sqlite") == contents("some.sqlite"))
    added = [int(re.search(r"(\d+) added", text)[1]) for text in texts]
    with sqlite3.connect("some.sqlite") as opened:
        check("each image is added by one", sum(added) == opened.execute("SELECT count(*) FROM images").fetchone()[0], added)


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        run("images", "truth.json", "900", "5", program=generator)
        with open("truth.json", encoding="utf-8") as file:
            truth = json.load(file)
        done = run("collect", "images", "--into", "fleet.sqlite", status=1)
        check("the summary", done.stderr.splitlines()[-1] ==
              f"900 images: 900 added, 0 changed, 0 unchanged; {len(truth['damaged'])} damaged", done.stderr)
        done = run("collect", "images", "--into", "fleet.sqlite", status=1)
        check("nothing is read again", done.stderr ==
              f"900 images: 0 added, 0 changed, 900 unchanged; {len(truth['damaged'])} damaged\n", done.stderr)
        test_outliers(truth)
        test_trends(truth)
        test_damage(truth)
        test_wear(truth)
        test_pages(truth)
        test_kill()
        test_two_at_once()
        os.chdir("/")
    sys.exit(1 if failures else 0)


main()
