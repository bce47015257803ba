#!/usr/bin/python3
"""Makes the pictures of the documents: report-screenshots.py TOOL SAMPLES FOLDER"""

import io
import random
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

from PIL import Image

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "report"))

import browser as chromium  # noqa: E402  from the folder above

TOOL, SAMPLES, FOLDER = (Path(argument).resolve() for argument in sys.argv[1:4])
LEVELS, LEVELS_SIZE = 2300, 1040  # where RFBO_RFLEVEL_MAX_DATA lies in the RF board


def picture(browser, page, name, block, row, width=920, height=600):
    chromium.size(browser, width, height)
    chromium.open_page(browser, page)
    section = chromium.wait_for(browser, f"""return [...document.querySelectorAll('.block')].find(
        section => section.querySelector('h3').textContent.includes('{block}'))""")
    browser.execute_script("arguments[0].scrollIntoView()", section)
    frame = chromium.wait_for(browser, f"const frame = document.querySelector('#{section.get_attribute('id')} .frame');"
                              "return frame?.dygraph && frame")
    browser.execute_script("""for (let i = 0; i < arguments[1]; ++i)
        arguments[0].dispatchEvent(new KeyboardEvent('keydown', {key: 'ArrowRight'}))""", frame, row)
    shot = Image.open(io.BytesIO(browser.get_screenshot_as_png())).convert("RGB")
    shot.quantize(64, method=Image.Quantize.MEDIANCUT, dither=Image.Dither.NONE).save(FOLDER / name, optimize=True)


def family(folder, count=40):
    """RF boards that differ a little; one has a hump."""
    board = (SAMPLES / "rf-board.bin").read_bytes()
    chance = random.Random(14)
    paths = []
    for k in range(count):
        image = bytearray(board)
        offset = chance.gauss(0, 4)
        for i in range(256):
            at = LEVELS + 16 + 4 * i
            shift = round(offset + chance.gauss(0, 1.5)) - (40 if k == 23 and 60 <= i < 75 else 0)
            struct.pack_into("<i", image, at, struct.unpack_from("<i", image, at)[0] + shift)
        struct.pack_into("<H", image, LEVELS + 4, 0)
        words = struct.unpack_from(f"<{LEVELS_SIZE // 2}H", image, LEVELS)
        struct.pack_into("<H", image, LEVELS + 4, -sum(words) % 65536)
        paths.append(folder / f"rf-board-{k + 1:02}.bin")
        paths[-1].write_bytes(image)
    return paths


def main():
    with tempfile.TemporaryDirectory() as made:
        folder = Path(made)
        one, many = folder / "one.html", folder / "many.html"
        # In the folder of the images, whose names then stand alone.
        subprocess.run([TOOL, "report", "rf-board.bin", "-o", one], cwd=SAMPLES, check=True)
        subprocess.run([TOOL, "report", *(path.name for path in family(folder)), "-o", many], cwd=folder, check=True)
        browser = chromium.start()
        try:
            chromium.theme(browser, "light")
            picture(browser, one, "report-module.png", "RFBO_ATT_CAL_DATA", 90, height=740)
            picture(browser, many, "report-family.png", "RFBO_RFLEVEL_MAX_DATA", 70)
        finally:
            browser.quit()


if __name__ == "__main__":
    main()
