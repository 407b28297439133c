// Where moments stand on the axis that all charts share: drives one behind the other or over each
// other from their starts, along time or along the distance that was driven.

// Long holes are left out of the time: those of half an hour, or of what is long for so short a
// record, or for a tracker that reports every two minutes.
const segments = (function () {
    const pauses = [];
    let recorded = 0;
    for (const drive of drives) {
        for (let i = drive.begin + 1; i < drive.end; ++i) {
            pauses.push(times[i] - times[i - 1]);
            recorded += hasBreak(i, HOLE) ? 0 : times[i] - times[i - 1];
        }
    }
    pauses.sort((a, b) => a - b);
    const usual = pauses[pauses.length >> 1] || 0;
    const longHole = Math.max(60000, Math.min(1800000, 10 * recorded), 10 * usual);
    const found = [];
    for (const drive of drives) {
        for (let i = drive.begin; i < drive.end; ++i) {
            if (i === drive.begin || (hasBreak(i, HOLE) && times[i] - times[i - 1] > longHole)) {
                found.push({drive: drive.number, begin: i, end: i});
            }
            found[found.length - 1].end = i + 1;
        }
    }
    return found;
})();

// What can be shown by itself.
const everything = {begin: 0, end: count};
const parts = several ? drives.filter((drive) => drive.count > 0) : segments;

const axis = {
    over: false,     // each other, from their starts
    along: 'time',   // or 'distance'
    x: [],           // of each moment: milliseconds or metres
    orders: [],      // of each drive: its moments in order of x
    cuts: [],        // between drives and where time is left out
};

const lengthOf = (part) => axis.along === 'time' ? times[part.end - 1] - times[part.begin]
    : data.way[part.end - 1];

// Whoever is alone has the time itself as x.
function layOut() {
    const pieces = axis.along === 'time' ? segments : drives.filter((drive) => drive.count > 0);
    const pause = 0.02 * pieces.reduce((sum, piece) => sum + lengthOf(piece), 0);
    const from = axis.along === 'time' && !axis.over && count > 0 ? times[0] : 0;
    let next = from;
    axis.cuts = [];
    pieces.forEach((piece, number) => {
        const drive = axis.along === 'time' ? piece.drive : piece.number;
        if (axis.over && piece.begin === drives[drive].begin) {
            next = from;
        }
        piece.x = next;
        for (let i = piece.begin; i < piece.end; ++i) {
            axis.x[i] = next + (axis.along === 'time' ? times[i] - times[piece.begin] : data.way[i]);
        }
        next += lengthOf(piece) + Math.max(pause, 1);
        if (number + 1 < pieces.length && !axis.over) {
            axis.cuts.push(next - Math.max(pause, 1) / 2);
        }
    });
    axis.pieces = pieces;
    axis.orders = drives.map((drive) => {
        const order = Array.from({length: drive.count}, (_, i) => drive.begin + i);
        return order.sort((a, b) => axis.x[a] - axis.x[b] || a - b);
    });
}

function spanOf(part) {
    let [low, high] = [Infinity, -Infinity];
    for (let i = part.begin; i < part.end; ++i) {
        [low, high] = [Math.min(low, axis.x[i]), Math.max(high, axis.x[i])];
    }
    const rim = Math.max((high - low) * 0.01, high === low ? 500 : 0);
    return [low - rim, high + rim];
}

// The place in the drive's order of the first moment that is not before x.
function firstFrom(drive, x) {
    const order = axis.orders[drive];
    let low = 0;
    let high = order.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (axis.x[order[middle]] < x) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// The drive's moment that is next to x, -1 where there is none.
function nearestAt(drive, x) {
    const order = axis.orders[drive];
    const i = Math.min(firstFrom(drive, x), order.length - 1);
    const isBefore = i > 0 && x - axis.x[order[i - 1]] < axis.x[order[i]] - x;
    return order.length === 0 ? -1 : order[isBefore ? i - 1 : i];
}

// ---- Labels

// As precise as the steps are; where a day begins its date.
function timeLabel(time, granularity) {
    const steps = Dygraph.Granularity;
    const text = new Date(time).toISOString();
    if (axis.over) {
        return elapsedText(+time);
    }
    if (+time < FIRST_DATED) {
        return text.slice(11, granularity < steps.SECONDLY ? 23 : 19);
    }
    if (granularity >= steps.ANNUAL) {
        return text.slice(0, 4);
    }
    if (granularity >= steps.MONTHLY) {
        return text.slice(0, 7);
    }
    if (granularity >= steps.DAILY || +time % DAY === 0) {
        return text.slice(0, 10);
    }
    return text.slice(11, granularity < steps.SECONDLY ? 23 : granularity < steps.MINUTELY ? 19 : 16);
}

function timeTicks(low, high, pixels, options, graph) {
    const narrow = pixels < 450;
    const room = high - low > 1000 * DAY ? 50 : narrow && high - low > 5000 ? 62 : 100;
    return Dygraph.dateTicker(low, high, pixels,
        (name) => name === 'pixelsPerLabel' ? room : options(name), graph);
}

function lengthTicks(low, high, pixels) {
    const step = roundUp((high - low) * 80 / pixels);
    const ticks = [];
    for (let v = Math.ceil(low / step) * step; v <= high; v += step) {
        ticks.push({v: v, label: String(+(v / 1000).toPrecision(6))});
    }
    return ticks;
}

// The least of 1, 2, 5, 10, 20, ... that is not below the value.
function roundUp(value) {
    const power = Math.pow(10, Math.floor(Math.log10(value)));
    return power * [1, 2, 5, 10].find((factor) => factor * power >= value * (1 - 1e-9));
}

// Each piece has labels of its own: its time of day, or the way from its start.
function ticksOf(low, high, pixels, options, graph) {
    const pieces = axis.over ? [{x: 0, first: 0, length: high}]
        : axis.pieces.map((piece) => ({x: piece.x, length: lengthOf(piece),
            first: axis.along === 'time' ? times[piece.begin] : 0}));
    const alone = pieces.length === 1;
    const ticks = [];
    for (const piece of pieces) {
        const begin = alone ? low : Math.max(low, piece.x);
        const end = alone ? high : Math.min(high, piece.x + piece.length);
        const shift = piece.x - piece.first;
        const share = (end - begin) / (high - low) * pixels;
        if (end > begin && share > 3) {
            const own = axis.along === 'time' ? timeTicks : lengthTicks;
            for (const tick of own(begin - shift, end - shift, share, options, graph)) {
                ticks.push({v: tick.v + shift, label: tick.label});
            }
        }
    }
    return keepApart(ticks, low, high, pixels);
}

// Without the labels that would stand beyond the ends of the axis or in each other. On a phone dates
// are short, for their years are named below.
function keepApart(ticks, low, high, pixels) {
    let free = -6;
    for (const tick of ticks) {
        if (pixels < 450 && /^\d{4}-\d\d-\d\d$/.test(tick.label)) {
            tick.label = tick.label.slice(5);
        }
        const place = (tick.v - low) / (high - low) * pixels;
        const half = (tick.label || '').length * 3.6;
        if (place - half < free || place > pixels - half + 10) {
            tick.label = '';
        } else if (tick.label) {
            free = place + half + 2;
        }
    }
    return ticks;
}

// What the axis is, below it.
function axisName(shown) {
    if (axis.along === 'distance') {
        return axis.over ? 'km from each start' : several ? 'km of each drive' : 'km';
    }
    if (axis.over) {
        return 'time from each start';
    }
    const days = [...new Set(shown.map((i) => times[i] < FIRST_DATED ? 'no date'
        : clock(times[i]).slice(0, 10)))].sort();
    return 'UTC, ' + (days.length > 1 ? days[0] + ' to ' + days[days.length - 1] : days[0]);
}
