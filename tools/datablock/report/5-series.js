// What a plot is drawn from: points over one axis, whatever the table has.

/** One line of a plot.
 * @typedef {{label: string, curve: number, place: number, color: string, width: number, dash?: number[],
 *   values: (number | null)[], cells: Cell[], decimals?: number, unit?: string}} Line */

/** Where the points of a table lie.
 * @typedef {{xs: number[], isLogarithmic: boolean, note: string, unit?: string, decimals?: number,
 *   texts?: string[]}} Points */

/** Frequencies that are stored in coarse steps may follow themselves.
 * @param {(number | null | undefined)[]} values
 * @param {number} rows
 * @param {boolean} [mayStay] */
function isAscending(values, rows, mayStay = false) {
    for (let i = 0; i < rows; ++i) {
        const value = values[i];
        const before = i > 0 ? values[i - 1] : -Infinity;
        if (typeof value !== "number" || !(value > /** @type {number} */ (before) || mayStay && value === before))
            return false;
    }
    return rows < 2 || /** @type {number} */ (values[rows - 1]) > /** @type {number} */ (values[0]);
}

/** The axis of a table; the number of the row where there is none that can be drawn.
 * @param {Table} table
 * @returns {Points} */
function pointsOf(table) {
    const numbers = Array.from({length: table.rows}, (_, i) => i);
    const {values, unit, decimals, texts, logarithmic} = table.axis;
    if (texts && texts.length)
        return {xs: numbers, isLogarithmic: false, note: "", texts};
    if (!values || values.length < table.rows)
        return {xs: numbers, isLogarithmic: false, note: ""};
    if (!isAscending(values, table.rows, !table.ownAxes)) {
        return {xs: numbers, isLogarithmic: false,
                note: "The axis is not ascending: drawn over the number of the row."};
    }
    const own = (table.ownAxes || []).filter(axis => axis && isAscending(axis, axis.length));
    const shared = /** @type {number[]} */ (values.slice(0, table.rows));
    if (!own.length)
        return {xs: shared, isLogarithmic: Boolean(logarithmic), note: "", unit, decimals};
    const xs = new Set(shared);
    for (const axis of own) {
        for (const x of axis || [])
            xs.add(/** @type {number} */ (x));
    }
    const all = [...xs].sort((left, right) => left - right);
    return {xs: all, isLogarithmic: Boolean(logarithmic) && all[0] > 0, note: "", unit, decimals};
}

/** @param {Points} points
 * @param {number} i */
function pointLabel(points, i) {
    if (points.texts)
        return points.texts[i] || String(i);
    return withUnit(shownNumber(points.xs[i], points.decimals), points.unit);
}

/** The cells of a place of a curve, by point.
 * @param {Table} table
 * @param {Points} points
 * @param {number} curve
 * @param {number} place index into `drawn`
 * @returns {Cell[]} */
function cellsOf(table, points, curve, place) {
    const cells = table.curves[curve].values[place] || [];
    const axis = (table.ownAxes && table.ownAxes[place]) || table.axis.values;
    if (points.texts || !axis || points.xs.length === table.rows && axis === table.axis.values ||
        !isAscending(axis, Math.min(axis.length, cells.length)))
        return points.xs.map((_, i) => cells[i] ?? null);
    const byPoint = new Map(axis.map((x, i) => [x, cells[i] ?? null]));
    return points.xs.map(x => byPoint.get(x) ?? null);
}

/** @param {Table} table
 * @param {Points} points
 * @param {number} curve
 * @param {number} place
 * @param {Partial<Line>} look
 * @returns {Line} */
function lineOf(table, points, curve, place, look) {
    const {name, decimals, unit} = table.curves[curve];
    const cells = cellsOf(table, points, curve, place);
    return {label: name, curve, place, color: curveColor(curve, table.curves.length), width: 1.5, cells, decimals, unit,
            values: cells.map(numberOf), ...look};
}

/** The unit of all curves that are numbers; empty where there is none or not the same.
 * @param {Table} table */
function commonUnit(table) {
    const units = new Set(table.curves.filter(curve => !curve.text).map(curve => curve.unit || ""));
    return units.size === 1 ? [...units][0] : "";
}

/** B minus A, where both have a number.
 * @param {Line} before
 * @param {Line} after
 * @returns {Line} */
function differenceOf(before, after) {
    const values = before.values.map((value, i) => {
        const other = after.values[i];
        return value === null || other === null ? null : Number((other - value).toPrecision(12));
    });
    return {...before, values, cells: values};
}
