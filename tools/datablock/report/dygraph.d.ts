/** What the page uses of the plotting library. */
interface DygraphPoint {
    canvasx: number;
    canvasy: number;
    name: string;
    xval: number;
    yval: number;
}

interface DygraphArea {
    x: number;
    y: number;
    w: number;
    h: number;
}

interface DygraphPlotter {
    points: DygraphPoint[];
    drawingContext: CanvasRenderingContext2D;
    color: string;
    strokeWidth: number;
    dygraph: Dygraph;
    setName: string;
    plotArea: DygraphArea;
}

declare class Dygraph {
    constructor(element: HTMLElement, data: (number | null)[][], options: object);
    static Plotters: { linePlotter(plotter: DygraphPlotter): void };
    static numericLinearTicks(low: number, high: number, pixels: number, options: (name: string) => unknown, graph: Dygraph): object[];
    canvas_: HTMLCanvasElement;
    destroy(): void;
    getArea(): DygraphArea;
    getSelection(): number;
    setSelection(row: number, series?: string): void;
    clearSelection(): void;
    setVisibility(series: number, visible: boolean): void;
    updateOptions(options: object, blockRedraw?: boolean): void;
    resetZoom(): void;
    isZoomed(axis?: string): boolean;
    numRows(): number;
    numColumns(): number;
    getValue(row: number, column: number): number | null;
    xAxisRange(): [number, number];
    xAxisExtremes(): [number, number];
    yAxisRange(): [number, number];
    toDomXCoord(x: number): number;
    toDomYCoord(y: number): number;
    toDataYCoord(y: number): number;
    resize(): void;
}

interface HTMLElement {
    /** The plot inside a figure, while there is one. */
    dygraph?: Dygraph;
}
