// The bytes of a block and its layout, side by side: a field lights up its bytes, a byte its field.

/** @param {string} base64 */
function bytesOf(base64) {
    const text = atob(base64);
    const bytes = new Uint8Array(text.length);
    for (let i = 0; i < text.length; ++i)
        bytes[i] = text.charCodeAt(i);
    return bytes;
}

/** Which field each byte belongs to, and which of its elements; -1: none.
 * @param {LayoutField[]} layout
 * @param {number} size */
function fieldMap(layout, size) {
    const fields = new Int16Array(size).fill(-1);
    const elements = new Int32Array(size).fill(-1);
    for (const [index, field] of layout.entries()) {
        const dimensions = field.dimensions || [];
        const count = dimensions.reduce((product, dimension) => product * dimension[0], 1);
        for (let i = 0; i < count; ++i) {
            let at = field.offset;
            for (let d = dimensions.length - 1, rest = i; d >= 0; --d) {
                at += rest % dimensions[d][0] * dimensions[d][1];
                rest = Math.floor(rest / dimensions[d][0]);
            }
            for (let b = at; b < at + field.width && b < size; ++b) {
                fields[b] = index;
                elements[b] = i;
            }
        }
    }
    return {fields, elements};
}

/** @param {LayoutField} field
 * @param {number} i */
function elementName(field, i) {
    const index = [];
    for (const [extent] of [...(field.dimensions || [])].reverse()) {
        index.unshift("[" + i % extent + "]");
        i = Math.floor(i / extent);
    }
    return field.name + index.join("");
}

const bytesPerLine = 16;
const linesPerPart = 32;

class BytesView {
    /** @param {Block} block
     * @param {number} place */
    constructor(block, place) {
        this.layout = block.layout;
        this.base = block.places[place].offset;
        this.bytes = bytesOf(block.places[place].bytes || "");
        this.map = fieldMap(this.layout, this.bytes.length);
        this.cursor = -1;
        this.lit = -2;
        this.rows = this.layout.map((field, index) => this.fieldRow(field, index));
        this.text = element("p", {class: "readout", "aria-live": "polite"}, "\u00a0");
        this.hex = element("div", {
            class: "hex", tabindex: "0", role: "application", "aria-roledescription": "hex view",
            "aria-label": counted(this.bytes.length, "byte") + " from " + this.base + " on. Arrow keys: bytes.",
            onkeydown: event => this.pressed(event), onmouseover: event => this.pointed(event),
            onmouseleave: () => this.light(-1, -1),
        });
        const partSize = bytesPerLine * linesPerPart;
        for (let from = 0; from < this.bytes.length; from += partSize)
            this.hex.appendChild(this.part(from, Math.min(from + partSize, this.bytes.length)));
        this.element = element("div", {class: "bytes"},
            element("div", {class: "layout", tabindex: "0", role: "group", "aria-label": "Layout"},
                element("table", {},
                    element("thead", {}, element("tr", {}, ...["Offset", "Field", "Type", "Elements", "What it is"].map(
                        name => element("th", {scope: "col"}, name)))),
                    element("tbody", {}, ...this.rows))),
            element("div", {class: "hexbox"}, this.bytes.length ? this.hex : element("p", {class: "quiet"},
                "The bytes are not on this page."), this.text));
    }

    /** @param {LayoutField} field
     * @param {number} index */
    fieldRow(field, index) {
        const extents = (field.dimensions || []).map(dimension => dimension[0]).join(" \u00d7 ");
        const light = () => this.light(index, -1);
        return element("tr", {tabindex: "0", onmouseenter: light, onfocus: light, onmouseleave: () => this.light(-1, -1)},
            element("td", {class: "number"}, String(field.offset)), element("th", {scope: "row"}, field.name),
            element("td", {}, field.type === "text" ? field.type + " " + field.width : field.type),
            element("td", {class: "number"}, extents),
            element("td", {}, field.purpose + (field.unit ? ", in " + field.unit : "")));
    }

    /** Lines are made when they come into view: a block has up to 64 KB.
     * @param {number} from
     * @param {number} to */
    part(from, to) {
        const lines = Math.ceil((to - from) / bytesPerLine);
        const part = element("div", {class: "part"});
        part.style.height = lines * 1.4 + "em";
        part.dataset.from = String(from);
        const observer = new IntersectionObserver(entries => {
            if (!entries.some(entry => entry.isIntersecting))
                return;
            observer.disconnect();
            this.fillPart(part, from, to);
        }, {root: this.hex, rootMargin: "400px"});
        observer.observe(part);
        return part;
    }

    /** @param {HTMLElement} part
     * @param {number} from
     * @param {number} to */
    fillPart(part, from, to) {
        if (part.childElementCount)
            return;
        for (let line = from; line < to; line += bytesPerLine) {
            const end = Math.min(line + bytesPerLine, to);
            const bytes = element("span", {class: "codes"});
            for (let i = line; i < end; ++i) {
                const code = element("span", {"data-at": i}, this.bytes[i].toString(16).padStart(2, "0"));
                bytes.appendChild(code);
            }
            let text = "";
            for (let i = line; i < end; ++i)
                text += this.bytes[i] >= 0x20 && this.bytes[i] < 0x7f ? String.fromCharCode(this.bytes[i]) : "\u00b7";
            part.appendChild(element("div", {class: "line"},
                element("span", {class: "at"}, (this.base + line).toString(16).padStart(6, "0")), bytes,
                element("span", {class: "chars"}, text)));
        }
        this.paint(part);
    }

    /** @param {Element} part */
    paint(part) {
        for (const code of part.querySelectorAll("[data-at]")) {
            const at = Number(/** @type {HTMLElement} */ (code).dataset.at);
            const field = this.map.fields[at];
            code.classList.toggle("lit", field >= 0 && field === this.lit);
            code.classList.toggle("cursor", this.cursor >= 0 && (at === this.cursor ||
                field >= 0 && field === this.lit && this.map.elements[at] === this.map.elements[this.cursor]));
        }
    }

    /** @param {number} field
     * @param {number} cursor */
    light(field, cursor) {
        if (field === this.lit && cursor === this.cursor)
            return;
        this.lit = field;
        this.cursor = cursor;
        for (const [index, row] of this.rows.entries())
            row.classList.toggle("lit", index === field);
        for (const part of this.hex.children)
            this.paint(part);
        this.say();
    }

    say() {
        const field = this.layout[this.lit];
        if (this.cursor >= 0) {
            const at = "byte " + this.cursor + " of the block, " + offsetText(this.base + this.cursor) + " of the image: 0x" +
                this.bytes[this.cursor].toString(16).padStart(2, "0");
            this.text.textContent = (field ? elementName(field, this.map.elements[this.cursor]) : "no field") + ", " + at;
        } else {
            this.text.textContent = field ? field.name + ", from byte " + field.offset + " on" : "\u00a0";
        }
    }

    /** @param {MouseEvent} event */
    pointed(event) {
        const at = event.target instanceof HTMLElement ? event.target.dataset.at : undefined;
        if (at !== undefined)
            this.light(this.map.fields[Number(at)], Number(at));
    }

    /** @param {KeyboardEvent} event */
    pressed(event) {
        const steps = /** @type {Record<string, number>} */ ({
            ArrowRight: 1, ArrowLeft: -1, ArrowDown: bytesPerLine, ArrowUp: -bytesPerLine, PageDown: 16 * bytesPerLine,
            PageUp: -16 * bytesPerLine, Home: -this.bytes.length, End: this.bytes.length});
        if (!(event.key in steps))
            return;
        event.preventDefault();
        const at = Math.min(Math.max(this.cursor + steps[event.key], 0), this.bytes.length - 1);
        const partSize = bytesPerLine * linesPerPart;
        const from = Math.floor(at / partSize) * partSize;
        const part = this.hex.querySelector('[data-from="' + from + '"]');
        if (part instanceof HTMLElement)
            this.fillPart(part, from, Math.min(from + partSize, this.bytes.length));
        this.light(this.map.fields[at], at);
        this.hex.querySelector('[data-at="' + at + '"]')?.scrollIntoView({block: "nearest"});
        const row = this.rows[this.map.fields[at]];
        row?.scrollIntoView({block: "nearest"});
    }
}
