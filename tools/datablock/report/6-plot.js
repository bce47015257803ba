// Curves over an axis. The library draws and zooms; what is written, pressed and read out is the page's.

/** @typedef {{
 *   points: Points, lines: Line[], title: string, axisTitle: string, unit: string,
 *   height: number,
 *   isVisible(line: number): boolean,
 *   readout(row: number, line: number): Child[],
 *   underlay?(context: CanvasRenderingContext2D, area: DygraphArea, plot: Dygraph): void,
 *   nearest?(row: number, value: number): number, choices?(): number, first?(): number,
 *   overlay?(context: CanvasRenderingContext2D, plot: Dygraph): void,
 *   zoomed?(range: [number, number] | null): void}} PlotOptions */

// Its legend takes texts for HTML, and the policy of the page has no room for its styles.
const library = /** @type {{PLUGINS: unknown[], Plugins: {Legend: unknown}}} */ (/** @type {unknown} */ (Dygraph));
library.PLUGINS = library.PLUGINS.filter(plugin => plugin !== library.Plugins.Legend);

const everyThird = 3; // pixels a point: below that, what lies between is not to be seen

/** Draws what is wider than the pixels are by the lowest and the highest of each.
 * @param {DygraphPlotter} plotter */
function thinPlotter(plotter) {
    const {points, drawingContext: context, plotArea} = plotter;
    if (points.length <= plotArea.w * everyThird) {
        Dygraph.Plotters.linePlotter(plotter);
        return;
    }
    context.save();
    context.strokeStyle = plotter.color;
    context.lineWidth = plotter.strokeWidth;
    context.beginPath();
    let isOpen = false;
    for (const y of thinned(points)) {
        if (Number.isNaN(y[1]))
            isOpen = false;
        else if (isOpen)
            context.lineTo(y[0], y[1]);
        else
            context.moveTo(y[0], y[1]);
        isOpen = !Number.isNaN(y[1]);
    }
    context.stroke();
    context.restore();
}

/** First, lowest, highest and last of each column of pixels; gaps stay.
 * @param {{canvasx: number, canvasy: number}[]} points
 * @returns {[number, number][]} */
function thinned(points) {
    /** @type {[number, number][]} */
    const kept = [];
    for (let i = 0; i < points.length;) {
        const column = Math.floor(points[i].canvasx);
        let low = -1;
        let high = -1;
        let last = i;
        const first = i;
        let hasGap = false;
        for (; i < points.length && Math.floor(points[i].canvasx) === column; ++i) {
            const y = points[i].canvasy;
            if (Number.isNaN(y)) {
                hasGap = true;
                continue;
            }
            if (low < 0 || y < points[low].canvasy)
                low = i;
            if (high < 0 || y > points[high].canvasy)
                high = i;
            last = i;
        }
        if (low >= 0) {
            const chosen = [...new Set([first, low, high, last])].sort((left, right) => left - right);
            for (const j of chosen)
                kept.push([points[j].canvasx, points[j].canvasy]);
        }
        if (hasGap && low < 0)
            kept.push([column, NaN]);
    }
    return kept;
}

/** The marks of an axis, short.
 * @param {number} value
 * @param {string | undefined} unit */
function tickText(value, unit) {
    if (frequencyUnits.includes(unit || ""))
        return withUnit(tidy(value), unit);
    const size = Math.abs(value);
    return size >= 1e7 || size > 0 && size < 1e-4 ? Number(value.toPrecision(6)).toExponential() : tidy(value);
}

/** The marks of a logarithmic axis: the same of each decade, or of every second, third ... one.
 * @param {number} low
 * @param {number} high
 * @param {number} pixels
 * @returns {number[] | null} null where the axis is too short for that */
function logarithmicTicks(low, high, pixels) {
    const most = Math.max(2, Math.floor(pixels / 75));
    const [first, last] = [Math.floor(Math.log10(low)), Math.ceil(Math.log10(high))];
    for (const [every, factors] of /** @type {[number, number[]][]} */ (
        [[1, [1, 2, 3, 5, 7]], [1, [1, 2, 5]], [1, [1, 3]], [1, [1]], [2, [1]], [3, [1]], [6, [1]]])) {
        const ticks = [];
        for (let decade = first; decade <= last; decade += every)
            ticks.push(...factors.map(factor => factor * 10 ** decade));
        const inside = ticks.filter(tick => tick >= low && tick <= high);
        if (inside.length <= most)
            return inside.length > 1 ? inside : null;
    }
    return null;
}

/** A plot with its keys and its line of text, drawn when it comes into view. */
class Plot {
    /** @param {PlotOptions} options */
    constructor(options) {
        this.options = options;
        /** @type {Dygraph | null} */
        this.graph = null;
        this.row = -1;
        this.line = -1;
        /** @type {[number, number] | null} */
        this.window = null;
        this.canvas = element("div", {class: "canvas"});
        this.canvas.style.height = options.height + "px";
        this.frame = element("div", {
            class: "frame", tabindex: "0", role: "application", "aria-roledescription": "plot",
            "aria-label": options.title + ". Arrow keys: points and curves; plus, minus: zoom; Escape: all.",
            onkeydown: event => this.pressed(event),
        }, this.canvas);
        this.text = element("p", {class: "readout", "aria-live": "polite"});
        this.element = element("div", {class: "plot"}, this.frame, element("p", {class: "xtitle"}, options.axisTitle), this.text);
        this.say();
        lazily(this.frame, () => this.draw(), () => this.drop());
    }

    draw() {
        const {points, lines} = this.options;
        const {isLogarithmic, xs} = points;
        const data = xs.map((x, i) => [x, ...lines.map(line => line.values[i])]);
        const ink = themeColor("--ink");
        const axisLine = themeColor("--line");
        const edge = isLogarithmic ? 1 : 0;
        /** @type {Record<string, object>} */
        const series = {};
        for (const [i, line] of lines.entries())
            series["s" + i] = {strokeWidth: line.width, strokePattern: line.dash || null, color: line.color};
        const few = xs.length <= 60 && lines.length <= 12;
        this.graph = new Dygraph(this.canvas, data, {
            labels: ["x", ...lines.map((_, i) => "s" + i)],
            series,
            visibility: lines.map((_, i) => this.options.isVisible(i)),
            legend: "never",
            connectSeparatedPoints: true,
            drawPoints: few || xs.length === 1,
            pointSize: 2,
            highlightCircleSize: 4,
            plotter: thinPlotter,
            axisLineColor: axisLine,
            gridLineColor: themeColor("--grid"),
            gridLineWidth: 1,
            axisLabelFontSize: 12,
            rightGap: 12,
            xRangePad: edge ? 0 : 4,
            yRangePad: 8,
            dateWindow: this.window,
            underlayCallback: (/** @type {CanvasRenderingContext2D} */ context, /** @type {DygraphArea} */ area,
                               /** @type {Dygraph} */ graph) => this.options.underlay?.(context, area, graph),
            highlightCallback: (/** @type {MouseEvent} */ event, /** @type {number} */ _x,
                                /** @type {DygraphPoint[]} */ near, /** @type {number} */ row) => this.pointed(event, near, row),
            unhighlightCallback: () => this.say(),
            zoomCallback: (/** @type {number} */ low, /** @type {number} */ high) => this.zoomed(low, high),
            axes: {
                x: {
                    logscale: isLogarithmic,
                    pixelsPerLabel: 70,
                    axisLabelWidth: 74,
                    ...isLogarithmic && {ticker: (/** @type {number} */ low, /** @type {number} */ high, /** @type {number} */ pixels,
                                                  /** @type {(name: string) => unknown} */ own, /** @type {Dygraph} */ graph) =>
                        logarithmicTicks(low, high, pixels)?.map(v => ({v, label: tickText(v, points.unit)})) ||
                        Dygraph.numericLinearTicks(low, high, pixels, own, graph)},
                    axisLabelFormatter: (/** @type {number} */ x) =>
                        points.texts ? (Number.isInteger(x) && points.texts[x]) || "" : tickText(x, points.unit),
                },
                y: {
                    axisLabelWidth: 64,
                    pixelsPerLabel: 34,
                    axisLabelFormatter: (/** @type {number} */ y) => tickText(y, this.options.unit),
                },
            },
        });
        this.canvas.style.color = ink;
        this.frame.dygraph = this.graph;
    }

    drop() {
        this.graph?.destroy();
        this.graph = null;
        delete this.frame.dygraph;
    }

    /** Colours or lines have changed. */
    redraw() {
        if (!this.graph)
            return;
        this.drop();
        this.draw();
    }

    refreshVisibility() {
        this.graph?.updateOptions({visibility: this.options.lines.map((_, i) => this.options.isVisible(i))});
        this.say();
    }

    /** @param {[number, number] | null} range */
    show(range) {
        this.window = range;
        this.graph?.updateOptions({dateWindow: range, valueRange: null});
    }

    /** @param {number} low
     * @param {number} high */
    zoomed(low, high) {
        const [first, last] = this.graph ? this.graph.xAxisExtremes() : [low, high];
        this.window = low <= first && high >= last ? null : [low, high];
        this.options.zoomed?.(this.window);
    }

    reset() {
        this.window = null;
        this.graph?.updateOptions({dateWindow: null, valueRange: null});
        this.options.zoomed?.(null);
    }

    /** @param {MouseEvent} event
     * @param {DygraphPoint[]} near
     * @param {number} row */
    pointed(event, near, row) {
        this.row = row;
        if (this.graph && event instanceof MouseEvent) {
            const y = event.clientY - this.canvas.getBoundingClientRect().top;
            if (this.options.nearest) {
                this.line = this.options.nearest(row, this.graph.toDataYCoord(y));
            } else {
                const distances = near.filter(point => Number.isFinite(point.canvasy))
                                      .map(point => ({name: point.name, distance: Math.abs(point.canvasy - y)}));
                distances.sort((left, right) => left.distance - right.distance);
                this.line = distances.length ? Number(distances[0].name.slice(1)) : -1;
            }
        }
        this.say();
        this.paintOverlay();
    }

    paintOverlay() {
        const context = this.graph?.canvas_.getContext("2d");
        if (context && this.graph)
            this.options.overlay?.(context, this.graph);
    }

    /** @param {Line[]} lines */
    setLines(lines) {
        this.options.lines = lines;
        this.line = -1;
        this.redraw();
        this.say();
    }

    say() {
        const {points} = this.options;
        this.text.textContent = "";
        if (this.row < 0 || this.row >= points.xs.length)
            append(this.text, "\u00a0");
        else
            append(this.text, ...this.options.readout(this.row, this.line));
    }

    /** @param {KeyboardEvent} event */
    pressed(event) {
        const {points, lines} = this.options;
        const last = points.xs.length - 1;
        const page = Math.max(1, Math.round(points.xs.length / 10));
        const steps = /** @type {Record<string, number>} */ (
            {ArrowRight: 1, ArrowLeft: -1, PageDown: page, PageUp: -page, Home: -last - 1, End: last + 1});
        if (event.ctrlKey || event.altKey || event.metaKey)
            return;
        if (event.key in steps) {
            this.row = Math.min(Math.max(this.row + steps[event.key], 0), last);
        } else if (event.key === "ArrowUp" || event.key === "ArrowDown") {
            const choices = this.options.choices?.();
            const visible = choices ? Array.from({length: choices}, (_, i) => i)
                                    : lines.map((_, i) => i).filter(i => this.options.isVisible(i));
            const at = visible.indexOf(this.line);
            this.line = visible[(at + (event.key === "ArrowDown" ? 1 : -1) + visible.length) % visible.length] ?? -1;
            this.row = Math.max(this.row, 0);
        } else if (event.key === "+" || event.key === "-") {
            this.zoomBy(event.key === "+" ? 0.5 : 2);
        } else if (event.key === "Escape") {
            this.reset();
        } else {
            return;
        }
        event.preventDefault();
        if (this.line < 0)
            this.line = this.options.first?.() ?? lines.findIndex((_, i) => this.options.isVisible(i));
        if (this.row >= 0)
            this.graph?.setSelection(this.row);
        this.say();
        this.paintOverlay();
    }

    /** @param {number} factor */
    zoomBy(factor) {
        if (!this.graph)
            return;
        const {xs, isLogarithmic} = this.options.points;
        const scale = isLogarithmic ? Math.log : (/** @type {number} */ x) => x;
        const back = isLogarithmic ? Math.exp : (/** @type {number} */ x) => x;
        const [first, last] = [scale(xs[0]), scale(xs[xs.length - 1])];
        const [low, high] = this.graph.xAxisRange().map(scale);
        const middle = this.row >= 0 ? scale(xs[this.row]) : (low + high) / 2;
        const half = (high - low) * factor / 2;
        const range = [Math.max(middle - half, first), Math.min(middle + half, last)];
        if (range[0] <= first && range[1] >= last) {
            this.reset();
            return;
        }
        this.show([back(range[0]), back(range[1])]);
        this.options.zoomed?.(this.window);
    }
}

/** All plots there are, to be drawn anew when the colours change.
 * @type {Plot[]} */
const plots = [];

/** What is in the element is about to go.
 * @param {Element} host */
function forgetPlots(host) {
    for (let i = plots.length - 1; i >= 0; --i) {
        if (host.contains(plots[i].frame)) {
            plots[i].drop();
            plots.splice(i, 1);
        }
    }
}

/** @param {PlotOptions} options */
function makePlot(options) {
    const plot = new Plot(options);
    plots.push(plot);
    return plot;
}
