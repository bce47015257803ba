// A table of a block: its plot, its heat map, its numbers.

/** @typedef {{name: string, cells: Cell[], decimals?: number, unit?: string, isText?: boolean, isDerived?: boolean}} Column */

/** A table while it is shown. What is the same for one module, two and many; the classes below differ. */
class TableView {
    /** @param {Table} table
     * @param {Block} block
     * @param {string} blockTitle */
    constructor(table, block, blockTitle) {
        this.table = table;
        this.block = block;
        this.blockTitle = blockTitle;
        this.points = pointsOf(table);
        this.unit = commonUnit(table);
        this.title = blockTitle + ", " + table.name;
        this.numbers = element("div", {class: "numbers"});
        this.element = element("figure", {class: "table", "data-rows": table.rows, "data-curves": table.curves.length});
    }

    /** What the numbers and the CSV hold.
     * @returns {Column[]} */
    columns() {
        return this.table.curves.map((curve, c) => ({
            name: curve.name, cells: cellsOf(this.table, this.points, c, 0), decimals: curve.decimals, unit: curve.unit,
            isText: curve.text,
        }));
    }

    axisTitle() {
        const {name, unit} = this.table.axis;
        return (name || "row") + (unit && this.points.unit && !frequencyUnits.includes(unit) ? ", in " + unit : "");
    }

    caption() {
        const {table} = this;
        const isOver = table.curvesName && table.curves.length > 1;
        const parts = ["by " + this.axisTitle() + (isOver ? " and " + table.curvesName : "")];
        if (this.unit)
            parts.unshift("in " + this.unit);
        return element("figcaption", {}, element("h4", {}, table.name), " ",
            element("span", {class: "quiet"}, parts.join(", ")), ...this.badges());
    }

    /** @returns {Child[]} */
    badges() {
        return [];
    }

    tools() {
        return [
            disclosure("Numbers", this.numbers, () => [this.grid()]),
            button("Copy as CSV", () => copyText(this.csv(), this.title)),
        ];
    }

    /** The numbers have changed: those of another curve are asked for. */
    refreshNumbers() {
        if (this.numbers.firstChild)
            this.numbers.replaceChildren(this.grid());
    }

    grid() {
        const columns = this.columns();
        const mostCells = 20000;
        const {xs} = this.points;
        const rows = Math.min(xs.length, Math.floor(mostCells / (columns.length + 1)));
        const head = element("tr", {}, element("th", {scope: "col"}, this.points.unit || this.points.texts ? this.table.axis.name : "row"),
            ...columns.map(column => element("th", {scope: "col"}, column.name +
                (column.unit && !this.unit ? " (" + column.unit + ")" : ""))));
        const body = element("tbody", {});
        for (let i = 0; i < rows; ++i) {
            body.appendChild(element("tr", {}, element("th", {scope: "row"}, pointLabel(this.points, i)),
                ...columns.map(column => element("td", {class: column.isText ? "" : "number"}, column.isDerived
                    ? withSign(derivedNumber(numberOf(column.cells[i]), column.decimals))
                    : frequencyUnits.includes(this.unit) ? withUnit(shownNumber(column.cells[i], column.decimals), this.unit)
                    : shownNumber(column.cells[i], column.decimals)))));
        }
        return element("div", {class: "scroll", tabindex: "0", role: "group", "aria-label": "Numbers of " + this.title},
            element("table", {}, element("thead", {}, head), body),
            rows < xs.length && element("p", {class: "quiet"}, "The first " + rows + " of " + xs.length +
                " rows; the CSV has all."));
    }

    csv() {
        const columns = this.columns();
        const {name, unit} = this.table.axis;
        const hasAxis = this.points.unit !== undefined || this.points.decimals !== undefined;
        const heading = [hasAxis || this.points.texts ? name + (unit ? " (" + unit + ")" : "") : "row",
                         ...columns.map(column => column.name + (column.unit ? " (" + column.unit + ")" : ""))];
        const lines = this.points.xs.map((x, i) => [this.points.texts ? pointLabel(this.points, i) : exactNumber(x, this.points.decimals),
            ...columns.map(column => exactNumber(column.cells[i], column.decimals))]);
        return [heading, ...lines].map(cells => cells.map(csvCell).join(",") + "\r\n").join("");
    }

    /** What a table is that is not plotted. */
    show() {
        const cells = this.table.rows * this.table.curves.length;
        append(this.element, this.caption());
        if (!this.table.rows || !this.table.curves.length) {
            append(this.element, element("p", {class: "quiet"}, "none in use"));
            return this.element;
        }
        const small = 64;
        const tools = this.tools();
        if (cells <= small)
            /** @type {HTMLElement} */ (tools[0]).click();
        append(this.element, element("div", {class: "tools"}, ...tools), this.numbers);
        return this.element;
    }
}

/** Curves that can be switched on and off. */
class CurvesView extends TableView {
    /** @param {Table} table
     * @param {Block} block
     * @param {string} blockTitle */
    constructor(table, block, blockTitle) {
        super(table, block, blockTitle);
        /** @type {number[]} */
        this.curves = table.curves.map((_, i) => i).filter(i => !table.curves[i].text &&
            table.curves[i].values.some(values => values.some(cell => numberOf(cell) !== null)));
        this.visible = new Set(this.initial());
        /** @type {Map<number, HTMLElement>} */
        this.switches = new Map();
        /** @type {Plot[]} */
        this.plots = [];
        this.element.classList.add("plotted");
        this.element.dataset.curves = String(this.curves.length);
    }

    /** Of curves that have nothing to do with each other, those of about the same size.
     * @returns {number[]} */
    initial() {
        const apart = 300;
        const sizes = this.curves.map(c => this.table.curves[c].values[0].reduce(
            (/** @type {number} */ size, cell) => Math.max(size, Math.abs(numberOf(cell) ?? 0)), 0));
        const middle = [...sizes].sort((left, right) => left - right)[Math.floor((sizes.length - 1) / 2)];
        return this.table.matrix ? this.curves : this.curves.filter((_, i) => !(sizes[i] > middle * apart && middle > 0));
    }

    /** @param {number} curve */
    colorOf(curve) {
        return curveColor(curve, this.table.curves.length);
    }

    /** @returns {Line[]} */
    lines() {
        return this.curves.map(c => lineOf(this.table, this.points, c, 0, {}));
    }

    /** @param {number} row
     * @param {number} line
     * @returns {Child[]} */
    readout(row, line) {
        const lines = this.plots[0].options.lines;
        const most = 5;
        const shown = lines.filter((_, i) => this.visible.has(lines[i].curve));
        const chosen = lines[line] && this.visible.has(lines[line].curve) ? lines[line] : undefined;
        const listed = shown.length <= most ? shown : chosen ? [chosen] : [];
        const parts = listed.map(one => element(one === chosen ? "b" : "span", {}, (this.table.curves.length > 1 ? one.label + " " : "") +
            (withUnit(shownNumber(one.cells[row], one.decimals), one.unit) || "none")));
        return [element("span", {class: "where"}, this.where(row)), ...parts.flatMap(part => [" ", part])];
    }

    /** @param {number} row */
    where(row) {
        const isNumbered = this.points.unit === undefined && this.points.decimals === undefined && !this.points.texts;
        return (isNumbered ? (this.table.axis.name || "row") + " " : "") + pointLabel(this.points, row) + ":";
    }

    legend() {
        const few = 1;
        if (this.curves.length <= few)
            return null;
        for (const curve of this.curves) {
            const color = this.colorOf(curve);
            const swatch = element("span", {class: "swatch"});
            swatch.style.background = color;
            const toggle = button("", () => this.toggle(curve), {class: "curve", "aria-pressed": String(this.visible.has(curve))});
            append(toggle, swatch, this.table.curves[curve].name);
            this.switches.set(curve, toggle);
        }
        const all = this.curves.length > 3 && [button("All", () => this.showOnly(this.curves)), button("None", () => this.showOnly([]))];
        return element("div", {class: "legend", role: "group", "aria-label": "Curves of " + this.title}, ...all || [],
            ...this.switches.values());
    }

    /** @param {number} curve */
    toggle(curve) {
        if (!this.visible.delete(curve))
            this.visible.add(curve);
        this.refresh();
    }

    /** @param {number[]} curves */
    showOnly(curves) {
        this.visible = new Set(curves);
        this.refresh();
    }

    refresh() {
        for (const [curve, toggle] of this.switches)
            toggle.setAttribute("aria-pressed", String(this.visible.has(curve)));
        for (const plot of this.plots)
            plot.refreshVisibility();
    }

    /** @param {Line[]} lines
     * @param {string} title
     * @param {number} height
     * @param {Partial<PlotOptions>} [further] */
    addPlot(lines, title, height, further = {}) {
        const plot = makePlot({
            points: this.points, lines, title, axisTitle: this.axisTitle(), unit: this.unit, height,
            isVisible: line => this.visible.has(lines[line].curve),
            readout: (row, line) => this.readout(row, line),
            zoomed: range => {
                for (const other of this.plots) {
                    if (other !== plot)
                        other.show(range);
                }
            },
            ...further,
        });
        this.plots.push(plot);
        return plot;
    }

    /** @returns {(Element | null | false)[]} */
    pictures() {
        return [this.addPlot(this.lines(), "Plot of " + this.title, 280).element];
    }

    heat() {
        if (!this.table.matrix)
            return null;
        const values = this.table.curves.map((_, c) => cellsOf(this.table, this.points, c, 0).map(numberOf));
        return new HeatMap(this.table, values, this.points, false, this.title).element;
    }

    remarks() {
        const wide = 900 * everyThird;
        return [this.points.note, this.points.xs.length > wide &&
            this.points.xs.length + " points are more than pixels: of each pixel the lowest and the highest is drawn; zoom in for all."];
    }

    show() {
        const pictures = this.pictures();
        append(this.element, this.caption());
        append(this.element,
            element("div", {class: "tools"}, button("Reset zoom", () => this.plots.forEach(plot => plot.reset())), ...this.tools()));
        append(this.element, ...pictures, this.legend(), this.heat(),
            ...this.remarks().filter(Boolean).map(remark => element("p", {class: "remark"}, String(remark))), this.numbers);
        return this.element;
    }
}

/** Two modules: both curves, and their difference below. */
class ComparedView extends CurvesView {
    /** @param {number} curve */
    difference(curve) {
        return differenceOf(lineOf(this.table, this.points, curve, 0, {color: this.colorOf(curve)}), lineOf(this.table, this.points, curve, 1, {}));
    }

    /** Those that changed most. */
    initial() {
        const most = 4;
        const size = /** @type {Map<number, number>} */ (new Map(this.curves.map(curve =>
            [curve, this.difference(curve).values.reduce((/** @type {number} */ largest, value) => Math.max(largest, Math.abs(value ?? 0)), 0)])));
        if (this.curves.length <= most)
            return this.curves;
        const sorted = [...this.curves].sort((left, right) => (size.get(right) || 0) - (size.get(left) || 0));
        const changed = sorted.filter(curve => size.get(curve));
        return (changed.length ? changed : sorted).slice(0, most);
    }

    badges() {
        const {changedValues, ownAxes} = this.table;
        return [" ", changedValues ? element("span", {class: "badge changed"}, counted(changedValues, "value") + " changed")
                                   : element("span", {class: "badge"}, "no value changed"),
                ownAxes ? element("span", {class: "badge changed"}, "another axis") : null];
    }

    /** Few of many are shown, often neighbours.
     * @param {number} curve */
    colorOf(curve) {
        return fewColors[curve % fewColors.length];
    }

    lines() {
        const other = this.curves.length === 1 ? fewColors[1] : "";
        return this.curves.flatMap(c => [lineOf(this.table, this.points, c, 0, {color: this.colorOf(c)}),
            lineOf(this.table, this.points, c, 1, {color: other || this.colorOf(c), dash: [6, 3]})]);
    }

    readout(/** @type {number} */ row, /** @type {number} */ line) {
        const lines = this.plots[0].options.lines;
        const chosen = lines[line] || lines.find(one => this.visible.has(one.curve));
        if (!chosen)
            return [this.where(row)];
        const [before, after] = lines.filter(one => one.curve === chosen.curve);
        const difference = differenceOf(before, after).values[row];
        const text = (/** @type {Line} */ one) => withUnit(shownNumber(one.cells[row], one.decimals), one.unit) || "none";
        return [element("span", {class: "where"}, this.where(row)), " " + (this.table.curves.length > 1 ? chosen.label + ": " : ""),
                "A ", element("b", {}, text(before)), ", B ", element("b", {}, text(after)),
                difference === null ? "" : ", B \u2212 A " + withUnit(withSign(derivedNumber(difference, before.decimals)), before.unit)];
    }

    columns() {
        return this.table.curves.flatMap((curve, c) => {
            const lines = [0, 1].map(place => lineOf(this.table, this.points, c, place, {}));
            const columns = lines.map((line, i) => /** @type {Column} */ ({name: curve.name + " " + "AB"[i], cells: line.cells,
                decimals: curve.decimals, unit: curve.unit, isText: curve.text}));
            if (!curve.text)
                columns.push({name: "B \u2212 A", cells: differenceOf(lines[0], lines[1]).cells, decimals: curve.decimals, unit: curve.unit,
                              isDerived: true});
            return columns;
        });
    }

    pictures() {
        const both = this.addPlot(this.lines(), "Both curves of " + this.title, 260);
        const lines = this.curves.map(c => this.difference(c));
        const shared = lines.some(line => line.values.some(value => value !== null));
        const key = element("p", {class: "key"}, element("span", {class: "stroke"}), "A " + head.sources[0].title + " ",
            element("span", {class: "stroke dashed"}), "B " + head.sources[1].title);
        if (!this.table.changedValues || !shared)
            return [key, both.element];
        // The difference has one line a curve, the readout is that of both.
        const difference = this.addPlot(lines, "Difference of " + this.title, 150, {
            readout: (row, line) => this.readout(row, line < 0 ? -1 : 2 * line),
        });
        return [key, both.element, element("h5", {}, "Difference, B \u2212 A"), difference.element];
    }

    heat() {
        if (!this.table.matrix || !this.table.changedValues)
            return null;
        const values = this.table.curves.map((_, c) => this.difference(c).values);
        return new HeatMap(this.table, values, this.points, true, "Difference of " + this.title).element;
    }
}

/** Many modules: one curve of each at a time. */
class FamilyView extends CurvesView {
    /** @param {Table} table
     * @param {Block} block
     * @param {string} blockTitle */
    constructor(table, block, blockTitle) {
        super(table, block, blockTitle);
        this.curve = this.widest();
        this.visible = new Set([this.curve]);
        /** @type {(number | null)[][]} */
        this.drawn = [];
        this.select(this.curve);
    }

    /** The curve with the farthest extremes. */
    widest() {
        let widest = this.curves[0] ?? 0;
        let most = -1;
        for (const c of this.curves) {
            const spread = this.table.curves[c].spread;
            for (let i = 0; spread && i < this.table.rows; ++i) {
                const middle = (spread.upperQuartile[i] ?? 0) - (spread.lowerQuartile[i] ?? 0);
                const width = (spread.highest[i] ?? 0) - (spread.lowest[i] ?? 0);
                const ratio = width / (middle || 10 ** -(this.table.curves[c].decimals ?? 6));
                if (ratio > most) {
                    most = ratio;
                    widest = c;
                }
            }
        }
        return widest;
    }

    /** @param {number} curve */
    select(curve) {
        this.curve = curve;
        this.visible = new Set([curve]);
        this.drawn = this.table.drawn.map((_, place) => cellsOf(this.table, this.points, curve, place).map(numberOf));
    }

    /** @param {number} place of the block */
    sourceOf(place) {
        return this.block.places[place].source;
    }

    badges() {
        const {odd, deviations} = this.table;
        const places = this.block.places.length;
        const count = this.drawn.filter(values => values.some(value => value !== null)).length;
        return [" ", element("span", {class: "badge"}, count < places ? count + " of " + counted(places, "module") + " drawn"
                                                                      : counted(places, "module")),
                " ", odd && odd.length ? element("span", {class: "badge odd"}, odd.length + " far off") : null,
                " ", deviations ? null : element("span", {class: "badge"}, "too few to judge")];
    }

    /** @param {(number | null)[] | undefined} values of the spread, by row
     * @returns {(number | null)[]} */
    spreadAt(values) {
        const axis = this.table.axis.values;
        if (!values || !axis || this.points.texts || this.points.xs.length === this.table.rows)
            return this.points.xs.map((_, i) => values?.[i] ?? null);
        const byPoint = new Map(axis.map((x, i) => [x, values[i] ?? null]));
        return this.points.xs.map(x => byPoint.get(x) ?? null);
    }

    lines() {
        const spread = this.table.curves[this.curve].spread;
        const {decimals, unit} = this.table.curves[this.curve];
        const range = themeColor("--range");
        const line = (/** @type {string} */ label, /** @type {(number | null)[] | undefined} */ values, /** @type {Partial<Line>} */ look) => {
            const cells = this.spreadAt(values);
            return /** @type {Line} */ ({label, curve: this.curve, place: -1, color: range, width: 1, cells, values: cells, decimals, unit, ...look});
        };
        const lines = [line("lowest", spread?.lowest, {dash: [2, 2]}), line("highest", spread?.highest, {dash: [2, 2]}),
                       line("median", spread?.median, {color: themeColor("--ink"), width: 2.5})];
        for (const [i, place] of this.oddDrawn().entries())
            lines.push(lineOf(this.table, this.points, this.curve, this.table.drawn.indexOf(place),
                {label: sourceLabel(this.sourceOf(place)), color: fewColors[(i + 1) % fewColors.length], width: 2}));
        const marked = this.table.drawn.findIndex(place => this.sourceOf(place) === markedSource);
        if (marked >= 0)
            lines.push(lineOf(this.table, this.points, this.curve, marked,
                {label: sourceLabel(markedSource), color: themeColor("--accent"), width: 3}));
        return lines;
    }

    oddDrawn() {
        const most = 8;
        return (this.table.odd || []).filter(place => this.table.drawn.includes(place)).slice(0, most);
    }

    readout(/** @type {number} */ row, /** @type {number} */ line) {
        const {decimals, unit, values} = this.table.curves[this.curve];
        const spread = this.table.curves[this.curve].spread;
        const text = (/** @type {(number | null)[] | undefined} */ list) => withUnit(derivedNumber(this.spreadAt(list)[row], decimals), unit) || "none";
        const parts = [element("span", {class: "where"}, this.where(row)),
                       " median " + text(spread?.median) + ", " + text(spread?.lowest) + " to " + text(spread?.highest)];
        const place = this.table.drawn[line];
        if (place !== undefined && values[line]) {
            const source = this.sourceOf(place);
            const deviation = this.table.deviations?.[place];
            parts.push("; " + sourceLabel(source) + " ", element("b", {}, withUnit(shownNumber(
                cellsOf(this.table, this.points, this.curve, line)[row], decimals), unit) || "none"),
                deviation !== undefined && deviation >= 0 ? " (its farthest point: " + deviationText(deviation) + ")" : "");
        }
        return parts;
    }

    columns() {
        const {spread, decimals, unit} = this.table.curves[this.curve];
        /** @type {Column[]} */
        const columns = ["median", "lowest", "highest"].map(name => ({name, decimals, unit,
            cells: this.spreadAt(spread?.[/** @type {keyof Spread} */ (name)]).map(value => value === null ? null : Number(tidy(value)))}));
        for (const [line, place] of this.table.drawn.entries())
            columns.push({name: sourceLabel(this.sourceOf(place)), cells: cellsOf(this.table, this.points, this.curve, line), decimals, unit});
        return columns;
    }

    chooser() {
        if (this.curves.length < 2)
            return null;
        const select = /** @type {HTMLSelectElement} */ (element("select", {onchange: () => {
            this.select(Number(select.value));
            this.plots[0].setLines(this.lines());
            this.refreshNumbers();
            this.refreshLegend();
        }}, ...this.curves.map(c => element("option", {value: c, selected: c === this.curve}, this.table.curves[c].name))));
        return element("label", {class: "chooser"}, this.table.curvesName || "Curve", " ", select,
            element("span", {class: "quiet"}, " of " + this.curves.length));
    }

    legend() {
        this.list = element("p", {class: "key"});
        this.refreshLegend();
        return this.list;
    }

    refreshLegend() {
        this.list?.replaceChildren();
        for (const line of this.plots[0].options.lines.filter(one => one.label !== "lowest")) {
            const swatch = element("span", {class: line.label === "highest" ? "swatch range" : "swatch"});
            if (line.label !== "highest")
                swatch.style.background = line.color;
            append(/** @type {HTMLElement} */ (this.list), element("span", {class: "keyed"}, swatch,
                line.label === "highest" ? "range of all, middle half darker" : line.label));
        }
        const hidden = (this.table.odd || []).length - this.oddDrawn().length;
        if (hidden > 0)
            append(/** @type {HTMLElement} */ (this.list), element("span", {class: "keyed quiet"}, hidden + " more far off"));
    }

    /** @param {CanvasRenderingContext2D} context
     * @param {Dygraph} graph
     * @param {(number | null)[]} values */
    trace(context, graph, values) {
        let isOpen = false;
        for (let i = 0; i < values.length; ++i) {
            const value = values[i];
            if (value === null)
                continue;
            const [x, y] = [this.xs[i], graph.toDomYCoord(value)];
            if (isOpen)
                context.lineTo(x, y);
            else
                context.moveTo(x, y);
            isOpen = true;
        }
    }

    /** @param {CanvasRenderingContext2D} context
     * @param {DygraphArea} area
     * @param {Dygraph} graph */
    underlay(context, area, graph) {
        // Many lines: the way from values to pixels is written out.
        const scale = this.points.isLogarithmic ? Math.log : (/** @type {number} */ x) => x;
        const [first, last] = graph.xAxisRange().map(scale);
        this.xs = this.points.xs.map(x => area.x + (scale(x) - first) / (last - first) * area.w);
        context.save();
        context.beginPath();
        context.rect(area.x, area.y, area.w, area.h);
        context.clip();
        const spread = this.table.curves[this.curve].spread;
        if (spread) {
            context.fillStyle = themeColor("--range");
            for (const [low, high, alpha] of /** @type {[(number | null)[], (number | null)[], number][]} */ (
                [[spread.lowest, spread.highest, 0.14], [spread.lowerQuartile, spread.upperQuartile, 0.22]])) {
                context.globalAlpha = alpha;
                context.beginPath();
                this.band(context, graph, this.spreadAt(low), this.spreadAt(high));
                context.fill();
            }
        }
        // Many lines upon each other make a dark cloud that hides what is in it.
        context.globalAlpha = Math.min(0.6, Math.max(0.12, 12 / this.drawn.length));
        context.strokeStyle = themeColor("--range");
        context.lineWidth = 1;
        context.beginPath();
        for (const values of this.drawn)
            this.trace(context, graph, values);
        context.stroke();
        context.restore();
    }

    /** @param {CanvasRenderingContext2D} context
     * @param {Dygraph} graph
     * @param {(number | null)[]} low
     * @param {(number | null)[]} high */
    band(context, graph, low, high) {
        const rows = low.map((_, i) => i).filter(i => low[i] !== null && high[i] !== null);
        for (const i of rows)
            context.lineTo(this.xs[i], graph.toDomYCoord(/** @type {number} */ (high[i])));
        for (const i of rows.reverse())
            context.lineTo(this.xs[i], graph.toDomYCoord(/** @type {number} */ (low[i])));
        context.closePath();
    }

    /** @type {number[]} */
    xs = [];

    pictures() {
        const plot = this.addPlot(this.lines(), "Family of " + this.title, 300, {
            isVisible: () => true,
            underlay: (context, area, graph) => this.underlay(context, area, graph),
            choices: () => this.table.drawn.length,
            first: () => Math.max(0, this.table.drawn.indexOf(this.table.odd?.[0] ?? -1)),
            nearest: (row, value) => {
                let nearest = -1;
                let distance = Infinity;
                for (const [line, values] of this.drawn.entries()) {
                    const own = values[row];
                    if (own !== null && Math.abs(own - value) < distance) {
                        distance = Math.abs(own - value);
                        nearest = line;
                    }
                }
                return nearest;
            },
            overlay: (context, graph) => {
                const values = this.drawn[this.plots[0].line];
                if (!values)
                    return;
                context.save();
                context.strokeStyle = themeColor("--accent");
                context.lineWidth = 2;
                context.beginPath();
                this.trace(context, graph, values);
                context.stroke();
                context.restore();
            },
        });
        markListeners.set(plot.frame, () => {
            plot.setLines(this.lines());
            this.refreshLegend();
        });
        return [this.chooser(), plot.element];
    }

    heat() {
        return null;
    }
}

/** What is to be done when another module is marked, by the plot that it concerns.
 * @type {Map<Element, () => void>} */
const markListeners = new Map();

/** @param {number} source */
function markSource(source) {
    markedSource = source;
    for (const listener of markListeners.values())
        listener();
}

/** @param {number} deviation robust deviations from the median */
function deviationText(deviation) {
    return (deviation >= 1000 ? "1000 or more" : deviation >= 10 ? deviation.toFixed(0) : deviation.toFixed(1)) + " \u03c3";
}

/** @param {Table} table
 * @param {Block} block
 * @param {string} title */
function tableView(table, block, title) {
    if (!table.plotted)
        return head.form === "comparison" && block.places.length === 2 ? new PlainComparedView(table, block, title)
                                                                      : new TableView(table, block, title);
    if (block.places.length === 1)
        return new CurvesView(table, block, title);
    return head.form === "comparison" ? new ComparedView(table, block, title) : new FamilyView(table, block, title);
}

/** Numbers of two modules that are not plotted. */
class PlainComparedView extends TableView {
    badges() {
        const {changedValues} = this.table;
        return [" ", changedValues ? element("span", {class: "badge changed"}, counted(changedValues, "value") + " changed") : null];
    }

    columns() {
        return this.table.curves.flatMap((curve, c) => [0, 1].map(place => ({
            name: curve.name + " " + "AB"[place], cells: cellsOf(this.table, this.points, c, place), decimals: curve.decimals,
            unit: curve.unit, isText: curve.text,
        })));
    }
}
