// A matrix as colours: points across, curves down.

class HeatMap {
    /** @param {Table} table
     * @param {(number | null)[][]} values by curve and point
     * @param {Points} points
     * @param {boolean} isDifference
     * @param {string} title */
    constructor(table, values, points, isDifference, title) {
        this.table = table;
        this.values = values;
        this.points = points;
        this.isDifference = isDifference;
        this.row = 0;
        this.column = 0;
        const [low, high] = this.range();
        this.low = low;
        this.high = high;
        const unit = commonUnit(table);
        const {decimals} = table.curves[0];
        this.canvas = /** @type {HTMLCanvasElement} */ (element("canvas", {}));
        this.mark = element("div", {class: "mark", hidden: true});
        this.frame = element("div", {
            class: "heat", tabindex: "0", role: "application", "aria-roledescription": "heat map",
            "aria-label": title + " as a heat map, " + counted(values.length, "row") + ". Arrow keys: cells.",
            onkeydown: event => this.pressed(event), onmousemove: event => this.pointed(event),
            onmouseleave: () => this.leave(),
        }, this.canvas, this.mark);
        this.text = element("p", {class: "readout", "aria-live": "polite"}, "\u00a0");
        const bar = /** @type {HTMLCanvasElement} */ (element("canvas", {class: "bar", width: 128, height: 1, "aria-hidden": "true"}));
        this.paint(bar, 128, 1, x => low + (high - low) * x / 127);
        const short = (/** @type {Curve} */ curve) => curve.name.replace(table.curvesName + " ", "");
        const first = short(table.curves[0]);
        const last = short(table.curves[table.curves.length - 1]);
        this.element = element("div", {class: "heatbox"},
            element("div", {class: "heatrow"},
                element("div", {class: "heatends", "aria-hidden": "true"}, element("span", {}, first), element("span", {}, last)),
                this.frame),
            element("div", {class: "heataxis", "aria-hidden": "true"}, element("span", {}, pointLabel(points, 0)),
                element("span", {}, pointLabel(points, points.xs.length - 1))),
            element("p", {class: "scale"}, withUnit(derivedNumber(low, decimals), unit), bar,
                withUnit(derivedNumber(high, decimals), unit), isDifference ? " (B \u2212 A)" : ""),
            this.text);
        this.frame.style.height = Math.min(Math.max(values.length * 8, 120), 320) + "px";
        lazily(this.frame, () => this.draw(), () => {
            this.canvas.width = 0;
        });
    }

    range() {
        let low = Infinity;
        let high = -Infinity;
        for (const curve of this.values) {
            for (const value of curve) {
                if (value !== null) {
                    low = Math.min(low, value);
                    high = Math.max(high, value);
                }
            }
        }
        if (low > high)
            return [0, 1];
        const most = Math.max(Math.abs(low), Math.abs(high)) || 1;
        return this.isDifference ? [-most, most] : low === high ? [low, low + 1] : [low, high];
    }

    /** @param {HTMLCanvasElement} canvas
     * @param {number} width
     * @param {number} height
     * @param {(x: number, y: number) => number | null} valueAt */
    paint(canvas, width, height, valueAt) {
        canvas.width = width;
        canvas.height = height;
        const context = canvas.getContext("2d");
        if (!context)
            return;
        const image = context.createImageData(width, height);
        const stops = this.isDifference ? differenceStops : heatStops;
        for (let y = 0; y < height; ++y) {
            for (let x = 0; x < width; ++x) {
                const value = valueAt(x, y);
                if (value === null)
                    continue;
                const color = between(stops, (value - this.low) / (this.high - this.low));
                image.data.set([...color, 255], 4 * (y * width + x));
            }
        }
        context.putImageData(image, 0, 0);
    }

    draw() {
        // A pixel a cell: the browser makes it as large as the frame, without smoothing.
        this.paint(this.canvas, this.points.xs.length, this.values.length, (x, y) => this.values[y][x]);
    }

    /** @param {MouseEvent} event */
    pointed(event) {
        const box = this.canvas.getBoundingClientRect();
        this.column = Math.floor((event.clientX - box.left) / box.width * this.points.xs.length);
        this.row = Math.floor((event.clientY - box.top) / box.height * this.values.length);
        this.say();
    }

    leave() {
        if (document.activeElement !== this.frame)
            this.mark.hidden = true;
    }

    /** @param {KeyboardEvent} event */
    pressed(event) {
        const steps = /** @type {Record<string, [number, number]>} */ (
            {ArrowRight: [1, 0], ArrowLeft: [-1, 0], ArrowDown: [0, 1], ArrowUp: [0, -1],
             Home: [-this.points.xs.length, 0], End: [this.points.xs.length, 0]});
        if (!(event.key in steps))
            return;
        event.preventDefault();
        this.column += steps[event.key][0];
        this.row += steps[event.key][1];
        this.say();
    }

    say() {
        this.column = Math.min(Math.max(this.column, 0), this.points.xs.length - 1);
        this.row = Math.min(Math.max(this.row, 0), this.values.length - 1);
        const curve = this.table.curves[this.row];
        const value = this.values[this.row][this.column];
        const text = this.isDifference ? withSign(derivedNumber(value, curve.decimals)) : shownNumber(value, curve.decimals);
        this.text.textContent = curve.name + ", " + pointLabel(this.points, this.column) + ": " +
            (withUnit(text, curve.unit) || "none");
        const [width, height] = [100 / this.points.xs.length, 100 / this.values.length];
        Object.assign(this.mark.style, {left: this.column * width + "%", width: width + "%", top: this.row * height + "%",
                                        height: height + "%"});
        this.mark.hidden = false;
    }
}
