// Colours that carry meaning. Each stands out against the light and the dark page; few curves have colours far apart,
// many the steps of one ramp, as rows of a matrix follow each other.

const fewColors = ["#1f77c9", "#d1570a", "#2b9348", "#b5359c", "#8a6d00", "#00858f", "#d03050", "#7a5cc9"];
const rampStops = [[68, 57, 155], [49, 104, 172], [33, 145, 140], [53, 163, 94], [140, 150, 20], [200, 120, 20], [205, 70, 60]];
// Dark to light, as the eye sees it.
const heatStops = [[68, 1, 84], [71, 44, 122], [59, 81, 139], [44, 113, 142], [33, 144, 141], [39, 173, 129],
                   [92, 200, 99], [170, 220, 50], [253, 231, 37]];
// From less through the same to more.
const differenceStops = [[33, 102, 172], [103, 169, 207], [220, 230, 238], [239, 138, 98], [178, 24, 43]];

/** @param {number[][]} stops
 * @param {number} part 0 to 1
 * @returns {[number, number, number]} */
function between(stops, part) {
    const place = Math.min(Math.max(part, 0), 1) * (stops.length - 1);
    const below = Math.min(Math.floor(place), stops.length - 2);
    const fraction = place - below;
    const mixed = stops[below].map((value, i) => Math.round(value + fraction * (stops[below + 1][i] - value)));
    return [mixed[0], mixed[1], mixed[2]];
}

/** @param {number} index
 * @param {number} count */
function curveColor(index, count) {
    if (count <= fewColors.length)
        return fewColors[index];
    return "rgb(" + between(rampStops, index / (count - 1)).join(",") + ")";
}
