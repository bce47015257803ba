// Numbers in the one form that they have everywhere: that of "datablock show".

const frequencyUnits = ["Hz", "kHz", "MHz", "GHz"]; // a thousand each

/** @param {Cell | undefined} cell
 * @param {number | undefined} decimals absent: as many as the number needs
 * @returns {string} */
function shownNumber(cell, decimals) {
    if (cell === null || cell === undefined)
        return "";
    if (typeof cell === "string")
        return cell;
    const text = decimals === undefined ? String(cell) : cell.toFixed(decimals);
    return /^-[0.]*$/.test(text) ? text.slice(1) : text;
}

/** Every digit that makes a difference.
 * @param {Cell | undefined} cell
 * @param {number | undefined} decimals */
function exactNumber(cell, decimals) {
    const text = shownNumber(cell, decimals);
    return typeof cell === "number" && Number(text) !== cell ? String(cell) : text;
}

/** @param {Cell | undefined} cell
 * @returns {number | null} */
function numberOf(cell) {
    if (typeof cell === "number")
        return cell;
    if (typeof cell !== "string" || cell.trim() === "")
        return null;
    const number = Number(cell);
    return Number.isFinite(number) ? number : null;
}

/** Frequencies in the largest unit in which they are at least 1; no digit is lost.
 * @param {string} text
 * @param {string | undefined} unit */
function withUnit(text, unit) {
    if (!unit || text === "")
        return text;
    const from = frequencyUnits.indexOf(unit);
    const match = /^(-?)([0-9]+)(?:\.([0-9]+))?$/.exec(text);
    if (from < 0 || !match)
        return text + " " + unit;
    const digits = match[2] + (match[3] || "");
    const leading = /^0*/.exec(digits)?.[0].length || 0;
    if (leading === digits.length)
        return "0 " + unit;
    const whole = match[2].length - leading + 3 * from; // digits before the point, in Hz
    let all = digits.slice(leading).replace(/0+$/, "");
    const step = Math.min(Math.max(Math.trunc((whole - 1) / 3), 0), 3);
    const point = whole - 3 * step;
    if (point <= 0)
        all = "0".repeat(1 - point) + all;
    const at = Math.max(point, 1);
    all = all.length <= at ? all.padEnd(at, "0") : all.slice(0, at) + "." + all.slice(at);
    return match[1] + all + " " + frequencyUnits[step];
}

/** Without what binary fractions add.
 * @param {number} number */
function tidy(number) {
    return String(Number(number.toPrecision(12)));
}

/** A difference or a quantile, one digit finer than the values.
 * @param {number | null} number
 * @param {number | undefined} decimals */
function derivedNumber(number, decimals) {
    if (number === null)
        return "";
    if (decimals === undefined)
        return String(Number(number.toPrecision(7)));
    return shownNumber(Number(number.toFixed(decimals + 1)) === Number(number.toFixed(decimals)) ? number : tidy(number),
                       decimals);
}

/** @param {string} text of a difference */
function withSign(text) {
    return Number(text) > 0 ? "+" + text : text;
}

/** @param {number} count
 * @param {string} noun
 * @param {string} [plural] */
function counted(count, noun, plural) {
    return count + " " + (count === 1 ? noun : plural || noun + "s");
}

/** @param {number} offset */
function offsetText(offset) {
    return offset + " (0x" + offset.toString(16) + ")";
}

/** @param {string} text */
function csvCell(text) {
    return /[",\r\n]/.test(text) ? '"' + text.replaceAll('"', '""') + '"' : text;
}
