#!/usr/bin/python3
"""Looks at the pages of 'datablock report' as a reader does, in a headless Chromium.

  report-test.py TOOL SAMPLES
"""

import base64
import json
import re
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import browser as chromium
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

TOOL = Path(sys.argv[1]).resolve()
SAMPLES = Path(sys.argv[2]).resolve()

# Each plot: what its figure says, and what its library was given.
PLOTS = """return [...document.querySelectorAll('figure.plotted')].map(figure => ({
    block: figure.closest('.block').id, rows: Number(figure.dataset.rows), curves: Number(figure.dataset.curves),
    plots: [...figure.querySelectorAll('.frame')].map(frame => frame.dygraph &&
        [frame.dygraph.numRows(), frame.dygraph.numColumns() - 1])}))"""
HEAD = "return JSON.parse(document.getElementById('head-data').textContent)"


def run(*arguments):
    return subprocess.run([TOOL, *map(str, arguments)], stdout=subprocess.PIPE, check=False).stdout


def show(image, block):
    return run("show", image, "--block", block).decode()


def csv(image, block):
    return [line.split(",") for line in run("show", "--csv", image, "--block", block, "--field", "values").decode().splitlines()]


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.work = Path(cls.folder.name)
        cls.browser = chromium.start()
        cls.browser.set_script_timeout(60)
        chromium.size(cls.browser, 1280, 900)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def open(self, *arguments, status=0):
        page = self.work / "page.html"
        made = chromium.report(TOOL, *arguments, "-o", page)
        self.assertEqual(made.returncode, status, made.stderr)
        chromium.open_page(self.browser, page)
        return page

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def tearDown(self):
        wrong = [entry for entry in self.browser.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]
        self.assertEqual(wrong, [])

    def find(self, selector):
        element = self.browser.find_element(By.CSS_SELECTOR, selector)
        self.script("arguments[0].scrollIntoView({block: 'center'})", element)
        return element

    def block(self, identifier):
        """The selector of a block, which is scrolled to and filled."""
        index = next(i for i, entry in enumerate(self.script(HEAD)["blocks"]) if entry["id"] == identifier)
        self.script("document.getElementById(arguments[0]).scrollIntoView()", f"block-{index}")
        chromium.wait_for(self.browser, f"return document.querySelector('#block-{index} .body').childElementCount")
        return f"#block-{index}"

    def plot(self, identifier):
        block = self.block(identifier)
        chromium.wait_for(self.browser, f"return document.querySelector('{block} .frame')?.dygraph?.numRows()")
        return block, self.find(f"{block} .frame")

    def readout(self, block):
        return self.script(f"return document.querySelector('{block} .readout').textContent")

    def test_every_sample_has_a_plot_a_table_and_a_point_a_number(self):
        for image in sorted(SAMPLES.glob("*.bin")):
            with self.subTest(image=image.stem):
                self.open(image)
                head = self.script(HEAD)
                self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, ".block")), len(head["blocks"]))
                if image.stem == "main-board":
                    continue  # alike and many; below
                chromium.draw_all(self.browser)
                plots = self.script(PLOTS)
                self.assertEqual(len(plots), sum(sum(entry["tables"]) for entry in head["blocks"]))
                for plot in plots:
                    self.assertEqual(plot["plots"], [[plot["rows"], plot["curves"]]], plot)
                self.tearDown()

    def test_there_are_as_many_points_as_the_counts_say(self):
        image = SAMPLES / "rf-board.bin"
        self.open(image)
        document = json.loads(run("show", "--json", image))
        counts = {block["id"]: block["fields"] for block in document[0]["blocks"]}
        checked = 0
        for identifier in (15706, 15716, 15721, 15726, 15731, 15756, 16001):
            block, _ = self.plot(identifier)
            rows, columns = counts[identifier]["rows"], counts[identifier]["columns"]
            size = self.script(f"const g = document.querySelector('{block} .frame').dygraph;"
                               "return [g.numRows(), g.numColumns() - 1]")
            self.assertEqual(size, [columns, rows])
            checked += 1
        self.assertEqual(checked, 7)

    def test_a_large_page_is_small_and_quick(self):
        page = self.open(SAMPLES / "main-board.bin")
        self.assertLess(page.stat().st_size, 3_000_000)
        times = []
        for _ in range(3):
            chromium.open_page(self.browser, page)
            times.append(chromium.wait_for(
                self.browser, "const shown = performance.getEntriesByName('shown')[0];"
                "const paint = performance.getEntriesByName('first-contentful-paint')[0];"
                "return shown && paint && Math.max(shown.startTime, paint.startTime)"))
        print(f"main board: {page.stat().st_size} bytes, first screen after {min(times):.0f} ms")
        self.assertLess(min(times), 1000)

    def test_the_pointer_reads_what_show_shows(self):
        image = SAMPLES / "dac-board.bin"
        self.open(image)
        block, frame = self.plot(13600)
        shown = re.sub(" +", " ", show(image, 13600))
        seen = set()
        for offset in (-300, -120, 0, 200, 310):
            ActionChains(self.browser).move_to_element_with_offset(frame, offset, 0).perform()
            text = chromium.wait_for(self.browser, f"return document.querySelector('{block} .readout').textContent.trim()")
            where, value = text.split(": ")
            self.assertIn(f"{where} {value}", shown)
            seen.add(where)
        self.assertGreater(len(seen), 3)

    def test_dragging_zooms_and_the_button_goes_back(self):
        self.open(SAMPLES / "dac-board.bin")
        block, frame = self.plot(13600)
        span = f"const [low, high] = document.querySelector('{block} .frame').dygraph.xAxisRange(); return high - low"
        whole = self.script(span)
        ActionChains(self.browser).move_to_element_with_offset(frame, -100, 0).click_and_hold() \
            .move_by_offset(150, 0).release().perform()
        self.assertLess(self.script(span), whole / 2)
        self.find(f"{block} .tools button").click()
        self.assertEqual(self.script(span), whole)

    def test_the_numbers_and_the_csv_are_those_of_show(self):
        image = SAMPLES / "rf-board.bin"
        self.open(image)
        block, _ = self.plot(15716)
        self.script("navigator.clipboard.writeText = text => { window.copied = text; return Promise.resolve(); }")
        buttons = {button.text: button for button in self.browser.find_elements(By.CSS_SELECTOR, f"{block} .tools button")}
        buttons["Numbers"].click()
        rows = self.script(f"return [...document.querySelectorAll('{block} .numbers tbody tr')].map("
                           "row => [...row.cells].map(cell => cell.textContent))")
        expected = csv(image, 15716)[1:]
        self.assertEqual([row[1:] for row in rows], [row[1:] for row in expected])
        buttons["Copy as CSV"].click()
        copied = chromium.wait_for(self.browser, "return window.copied")
        self.assertEqual([list(map(float, line.split(","))) for line in copied.split("\r\n")[1:-1]],
                         [list(map(float, row)) for row in expected])

    def test_the_legend_switches_curves(self):
        self.open(SAMPLES / "rf-board.bin")
        block, _ = self.plot(15706)
        visible = f"return document.querySelector('{block} .frame').dygraph.visibility()"
        self.assertEqual(self.script(visible), [True, True])
        self.find(f"{block} .curve").click()
        self.assertEqual(self.script(visible), [False, True])
        self.assertEqual(self.find(f"{block} .curve").get_attribute("aria-pressed"), "false")

    def test_a_matrix_is_a_heat_map_too(self):
        image = SAMPLES / "rf-board.bin"
        self.open(image)
        block = self.block(15721)
        heat = self.find(f"{block} .heat")
        chromium.wait_for(self.browser, f"return document.querySelector('{block} .heat canvas').width === 200")
        heat.send_keys(Keys.ARROW_DOWN, Keys.ARROW_RIGHT)
        expected = csv(image, 15721)[2][2]
        self.assertIn(f": {expected}", self.script(f"return document.querySelector('{block} .heatbox .readout').textContent"))

    def test_a_field_lights_up_its_bytes_and_a_byte_its_field(self):
        self.open(SAMPLES / "rf-board.bin")
        block = self.block(2)
        next(button for button in self.browser.find_elements(By.CSS_SELECTOR, f"{block} button")
             if button.text == "Layout and bytes").click()
        chromium.wait_for(self.browser, f"return document.querySelector('{block} .codes')")
        row = next(row for row in self.browser.find_elements(By.CSS_SELECTOR, f"{block} .layout tbody tr")
                   if row.find_element(By.CSS_SELECTOR, "th").text == "name")
        offset = int(row.find_element(By.CSS_SELECTOR, "td").text)
        ActionChains(self.browser).move_to_element(row).perform()
        lit = f"return [...document.querySelectorAll('{block} .hex .lit')].map(code => Number(code.dataset.at))"
        length = len(self.script(lit))
        self.assertEqual(self.script(lit), list(range(offset, offset + length)))
        text = self.script(f"return [...document.querySelectorAll('{block} .hex .lit')].map(code => code.textContent).join('')")
        self.assertTrue(bytes.fromhex(text).startswith(b"RFBO"))
        ActionChains(self.browser).move_to_element(self.find(f"{block} [data-at='0']")).perform()
        self.assertEqual(self.find(f"{block} .layout tr.lit th").text, "identifier")
        self.find(f"{block} .hex").send_keys(Keys.ARROW_DOWN)
        self.assertEqual(self.find(f"{block} .layout tr.lit").is_displayed(), True)

    def test_the_contents_are_searched(self):
        self.open(SAMPLES / "rf-board.bin")
        self.find("#search").send_keys("ext cal")
        names = [item.text for item in self.browser.find_elements(By.CSS_SELECTOR, "#contents li") if item.is_displayed()]
        self.assertEqual(len(names), 4)
        self.find("#search").send_keys(Keys.ENTER)
        self.assertIn("#block-", self.browser.current_url)

    def test_the_keyboard_reaches_everything(self):
        self.open(SAMPLES / "synthesizer.bin")
        chromium.draw_all(self.browser)
        self.script("""for (const button of document.querySelectorAll('[aria-expanded=false]')) button.click();
            window.reached = new Set();
            document.addEventListener('focusin', event => window.reached.add(event.target));
            document.activeElement.blur(); scrollTo(0, 0);""")
        # In a hidden part, or a closed one, nothing is to be reached.
        wanted = """return [...document.querySelectorAll('a, button, input, select, summary, [tabindex="0"]')].filter(
            element => element.checkVisibility())"""
        count = len(self.script(wanted))
        self.assertGreater(count, 40)
        for _ in range(count // 20 + 2):
            ActionChains(self.browser).send_keys(Keys.TAB * 20).perform()
        missed = self.script(wanted.replace("checkVisibility()", "checkVisibility() && !window.reached.has(element)") +
                             ".map(element => element.outerHTML)")
        self.assertEqual(missed, [])

    def test_the_keyboard_reads_and_zooms_a_plot(self):
        image = SAMPLES / "dac-board.bin"
        self.open(image)
        block, frame = self.plot(13600)
        frame.send_keys(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
        self.assertEqual(self.readout(block), "-36 MHz: 0.0067")
        frame.send_keys(Keys.END)
        self.assertEqual(self.readout(block), "60 MHz: 0.0054")
        span = f"const [low, high] = document.querySelector('{block} .frame').dygraph.xAxisRange(); return high - low"
        whole = self.script(span)
        frame.send_keys("+")
        self.assertLess(self.script(span), whole)
        frame.send_keys(Keys.ESCAPE)
        self.assertEqual(self.script(span), whole)

    def test_two_are_laid_over_each_other_changes_first(self):
        before = SAMPLES / "rf-board.bin"
        after = self.work / "after.bin"
        subprocess.run([TOOL, "set", before, "RFBO_ALC_DATA.values[0][3]=77", "-o", after], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.open(before, "--against", after)
        self.assertEqual(self.script(HEAD)["blocks"][0]["id"], 15731)
        block, frame = self.plot(15731)
        frames = self.browser.find_elements(By.CSS_SELECTOR, f"{block} .frame")
        self.assertEqual(len(frames), 2)  # both, and their difference
        column = "const g = arguments[0].dygraph; return Array.from({length: g.numRows()}, (_, i) => g.getValue(i, arguments[1]))"
        for line, image in ((1, before), (2, after)):
            self.assertEqual(self.script(column, frame, line), [float(row[1]) for row in csv(image, 15731)[1:]])
        difference = self.script(column, chromium.wait_for(
            self.browser, f"const frame = document.querySelectorAll('{block} .frame')[1]; return frame.dygraph && frame"), 1)
        old = float(csv(before, 15731)[4][1])
        self.assertEqual(difference, [0, 0, 0, 77 - old] + [0] * (len(difference) - 4))
        frame.send_keys(Keys.HOME, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
        self.assertRegex(self.readout(block), rf"A {old:g}, B 77, B \u2212 A [+-]")
        heading = self.script(f"return document.querySelector('{block} h3').textContent")
        self.assertIn("changed", heading)

    def family(self, count):
        """Images that differ a little, the sums of their blocks as they were; the last but one has a hump."""
        board = (SAMPLES / "rf-board.bin").read_bytes()
        at = {block["id"]: block["offset"] for block in json.loads(run("show", "--json", SAMPLES / "rf-board.bin"))[0]["blocks"]}
        paths = []
        for k in range(count):
            image = bytearray(board)
            for identifier in (15716, 15706):
                start = at[identifier] + 16
                for i in range(0, 100, 2):
                    shift = (k * 7919 + i * 31) % 5 - 2 + (400 if k == count - 2 and i == 40 and identifier == 15716 else 0)
                    for place, sign in ((start + 4 * i, 1), (start + 4 * i + 4, -1)):
                        value = struct.unpack_from("<i", image, place)[0]
                        struct.pack_into("<i", image, place, value + sign * shift)
            paths.append(self.work / f"m{k:03}.bin")
            paths[-1].write_bytes(image)
        return paths

    def test_a_family_of_500_stays_usable(self):
        paths = self.family(500)
        page = self.open(*paths)
        print(f"500 images: {page.stat().st_size} bytes")
        head = self.script(HEAD)
        self.assertEqual({entry["id"]: [source for source, _ in entry["odd"]] for entry in head["blocks"] if "odd" in entry},
                         {15716: [498]})
        self.assertIn("m498.bin", self.find("#sources tbody tr").text)
        block, _ = self.plot(15716)
        self.assertIn("1 far off", self.script(f"return document.querySelector('{block} figcaption').textContent"))
        self.assertIn("m498.bin", self.script(f"return document.querySelector('{block} .key').textContent"))
        # The page says what it leaves out.
        drawn = self.script(f"return document.querySelector('{block} figcaption').textContent")
        self.assertRegex(drawn, r"\d+ of 500 modules drawn")
        self.assertIn("are drawn", self.script("return document.querySelector('.remarks').textContent"))
        # From top to bottom, as fast as it goes.
        self.browser.execute_async_script("""const done = arguments[0];
            (function further() {
                scrollBy(0, 700);
                if (scrollY + innerHeight < document.documentElement.scrollHeight - 1)
                    setTimeout(further, 20);
                else
                    done();
            })();""")
        drawn = self.script("return [...document.querySelectorAll('.frame')].filter(frame => frame.dygraph).length")
        self.assertLess(drawn, 12)  # what is far away is gone again
        self.script("window.gc?.()")
        memory = self.memory()
        print(f"500 images: {memory} MB in the browser")
        self.assertLess(memory, 500)

    def memory(self):
        """MB of the process that holds the page."""
        pid = self.browser.service.process.pid
        most = 0
        for entry in Path("/proc").glob("[0-9]*"):
            try:
                if b"--type=renderer" in (entry / "cmdline").read_bytes() and self.descends(entry, pid):
                    rollup = (entry / "smaps_rollup").read_text()
                    most = max(most, int(re.search(r"Pss: +(\d+)", rollup)[1]) // 1024)
            except OSError:
                continue
        self.assertGreater(most, 10)
        return most

    @staticmethod
    def descends(entry, ancestor):
        pid = int(entry.name)
        while pid > 1 and pid != ancestor:
            pid = int(re.search(r"PPid:\s+(\d+)", Path(f"/proc/{pid}/status").read_text())[1])
        return pid == ancestor

    def test_hostile_names_are_only_shown(self):
        folder = self.work / "<" / "script><script>window.broken=1<"
        folder.mkdir(parents=True)
        image = folder / "script><img src=x onerror=window.broken=1>.bin"
        document = json.loads(run("show", "--json", SAMPLES / "rf-board.bin"))
        name = document[0]["blocks"][0]["fields"]["name"] = "</script>"
        (self.work / "edited.json").write_text(json.dumps(document))
        subprocess.run([TOOL, "build", self.work / "edited.json", "-o", image], check=True)
        self.open(image)
        chromium.draw_all(self.browser)
        self.assertTrue(self.script("return document.querySelector('h1').textContent").startswith(name))
        self.assertIn(str(image), self.script("return document.querySelector('#head').textContent"))
        self.assertIsNone(self.script("return window.broken"))
        self.assertEqual(self.script("return document.images.length"), 0)

    def test_the_policy_lets_nothing_else_run(self):
        self.open(SAMPLES / "synthesizer.bin")
        self.assertIn("default-src 'none'", self.script(
            "return document.querySelector('meta[http-equiv=Content-Security-Policy]').content"))
        self.script("""const element = document.createElement('script'); element.textContent = 'window.broken = 1';
            document.body.append(element); document.body.insertAdjacentHTML('beforeend', '<img src="https://example.invalid/x">')""")
        self.assertIsNone(self.script("return window.broken"))
        refused = [entry["message"] for entry in self.browser.get_log("browser")]
        self.assertEqual(len([text for text in refused if "Content Security Policy" in text]), len(refused))
        self.assertGreaterEqual(len(refused), 2)

    def test_damage_stands_first(self):
        image = self.work / "damaged.bin"
        bytes_ = bytearray((SAMPLES / "rf-board.bin").read_bytes())
        bytes_[2320] ^= 1
        image.write_bytes(bytes_[:70000])
        self.open(image, status=1)
        text = self.script("return document.querySelector('main > section').textContent")
        self.assertIn("2 problems", text)
        self.assertIn("wrong checksum", text)
        self.assertIn("RFBO_RFLEVEL_MAX_DATA", text)

    def test_paper_has_everything(self):
        self.open(SAMPLES / "dac-board.bin")
        chromium.theme(self.browser, "dark")
        printed = base64.b64decode(self.browser.execute_cdp_cmd("Page.printToPDF", {"printBackground": False})["data"])
        chromium.theme(self.browser, "light")
        plots = sum(sum(entry["tables"]) for entry in self.script(HEAD)["blocks"])
        self.assertGreater(plots, 8)
        self.assertGreaterEqual(len(re.findall(rb"/Subtype /Image", printed)), plots)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
