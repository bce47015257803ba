// What stands in the page's JSON, see docs/report.md.

/** A number in the format of its column, or what is shown instead; null: none.
 * @typedef {number | string | null} Cell */

/** @typedef {{name: string, unit?: string, decimals?: number, values?: (number | null)[], texts?: string[],
 *   logarithmic?: boolean}} Axis */

/** @typedef {{lowest: (number | null)[], lowerQuartile: (number | null)[], median: (number | null)[],
 *   upperQuartile: (number | null)[], highest: (number | null)[]}} Spread */

/** @typedef {{name: string, unit?: string, decimals?: number, text?: boolean, values: Cell[][], spread?: Spread}} Curve */

/** @typedef {{name: string, rows: number, plotted: boolean, matrix: boolean, changedValues?: number, axis: Axis,
 *   curvesName?: string, drawn: number[], ownAxes?: ((number | null)[] | null)[], deviations?: number[], odd?: number[],
 *   curves: Curve[]}} Table */

/** @typedef {{source: number, offset: number, size: number, checksum?: string, crc?: string, bytes?: string}} Place */

/** @typedef {{name: string, type: string, purpose: string, unit?: string, offset: number, width: number,
 *   dimensions?: [number, number][]}} LayoutField */

/** @typedef {{name: string, texts: string[]}} Field */

/** @typedef {{places: Place[], fields: Field[], tables: Table[], layout: LayoutField[]}} Block */

/** A block in the table of contents; `tables` holds 1 for each that is plotted, 0 for the others.
 * @typedef {{id: number, key?: string, class?: string, occurrence?: number, kind: number, places: number,
 *   fields: number, tables: number[], change?: string, changedValues?: number, changedBytes?: number, wrong?: number,
 *   odd?: [number, number][]}} Entry */

/** @typedef {{group: string, label: string, value: string, mark?: string}} Fact */

/** @typedef {{grade: "damage" | "note", offset: number, id?: number, text: string}} Finding */

/** @typedef {{name: string, title: string, kind: number, size: number, blocks: number, facts: Fact[],
 *   findings: Finding[]}} Source */

/** @typedef {{version: number, form: "module" | "comparison" | "family", title: string, generator: string,
 *   kinds: string[], remarks: string[], sources: Source[], blocks: Entry[]}} Head */

/** @param {string} id */
function parsed(id) {
    const element = document.getElementById(id);
    if (!element)
        throw new Error("the page has no " + id);
    return JSON.parse(element.textContent || "null");
}

/** @type {Head} */
const head = parsed("head-data");

/** The whole of a block, parsed when it is looked at.
 * @param {number} index
 * @returns {Block} */
function blockData(index) {
    return parsed("block-data-" + index);
}

/** @param {Entry} entry */
function titleOf(entry) {
    return (entry.key || entry.class || "unknown") + (entry.occurrence ? ", no. " + (entry.occurrence + 1) : "");
}

/** How much of the names is the folder of all. */
function sharedFolder() {
    const names = head.sources.map(source => source.name);
    let length = names.length > 1 ? names[0].lastIndexOf("/") + 1 : 0;
    while (length > 0 && !names.every(name => name.startsWith(names[0].slice(0, length))))
        length = names[0].lastIndexOf("/", length - 2) + 1;
    return length;
}
const sharedLength = sharedFolder();

/** The source of a place of a block, as short as it tells it from the others.
 * @param {number} source */
function sourceLabel(source) {
    if (head.form === "comparison")
        return source === 0 ? "A" : "B";
    return head.sources[source].name.slice(sharedLength);
}

// The module that is marked in all plots of a family, or -1.
let markedSource = -1;
