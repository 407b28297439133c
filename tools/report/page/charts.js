// The charts: speed, altitude, satellites and quality, a line for each drive.

const KINDS = [
    {column: 'speed', bit: 4, title: 'Speed', unit: 'km/h', height: 170, zero: true, fill: true},
    {column: 'altitude', bit: 8, title: 'Altitude', unit: 'm', height: 150, smallest: 10},
    {column: 'satellites', bit: 16, title: 'Satellites in use', unit: '', height: 110,
        zero: true, steps: true},
    {column: 'quality', bit: 32, title: 'Fix quality', unit: '', height: 110, zero: true,
        steps: true},
];
const COLOURS = 8;
const PATTERNS = [null, [8, 4], [2, 3]];

const box = byId('charts');
const charts = [];

// It is not used, and sets styles in a way that the page's policy forbids.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter((plugin) => plugin !== Dygraph.Plugins.Legend);

const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

// Speed and altitude that are not valid are no part of the drive.
const isShown = (kind, i) => data[kind.column][i] !== null && (kind.steps || data.valid[i] === 1);

// Whole numbers only, no more than there is room for.
function wholeTicks(low, high, pixels, options) {
    const room = Math.max(1, Math.floor(pixels / options('pixelsPerLabel')));
    let step = 1;
    for (let i = 0; (high - low) / step > room; ++i) {
        step *= [2, 2.5, 2][i % 3];
    }
    const ticks = [];
    for (let v = Math.ceil(low / step) * step; v <= high; v += step) {
        ticks.push({v: v, label: String(v)});
    }
    return ticks;
}

// Rows of x and a column for each drive: null where another drive has a moment, NaN for a gap.
function rowsOf(kind) {
    const rows = [];
    const row = (x, drive, value) => {
        const made = new Array(drives.length + 1).fill(null);
        made[0] = x;
        made[drive + 1] = value;
        rows.push(made);
    };
    for (const drive of drives) {
        let before = null;
        for (const i of axis.orders[drive.number]) {
            if (!isShown(kind, i)) {
                continue;
            }
            if (before !== null && hasBreak(i, kind.bit)) {
                row(before + 1e-3, drive.number, NaN);
            }
            row(axis.x[i], drive.number, data[kind.column][i]);
            before = axis.x[i];
        }
    }
    return rows.sort((a, b) => a[0] - b[0]);
}

function rangeOf(kind, rows, window) {
    let low = kind.zero ? 0 : Infinity;
    let high = kind.zero ? 1 : -Infinity;
    for (const row of rows) {
        if (row[0] < window[0] || row[0] > window[1]) {
            continue;
        }
        for (let drive = 1; drive < row.length; ++drive) {
            if (row[drive] !== null && !isNaN(row[drive])) {
                low = Math.min(low, row[drive]);
                high = Math.max(high, row[drive]);
            }
        }
    }
    if (low > high) {
        return [0, 1];
    }
    const missing = Math.max(0, (kind.smallest || 0) - (high - low));
    const rim = (high - low + missing) * 0.08;
    return [kind.zero ? low : low - missing / 2 - rim, high + missing / 2 + rim];
}

const lineColour = (drive) => several ? colour('--d' + drive % COLOURS) : colour('--line');

function looks() {
    return {
        colors: drives.map((drive) => lineColour(drive.number)),
        axisLineColor: colour('--axis'),
        gridLineColor: colour('--grid'),
    };
}

function describe(kind, indices) {
    const value = (i) => data[kind.column][i];
    const least = indices.reduce((best, i) => value(i) < value(best) ? i : best);
    const greatest = indices.reduce((best, i) => value(i) > value(best) ? i : best);
    const at = (i) => value(i) + (kind.unit && ' ' + kind.unit) + ' at ' + clock(times[i]) + ' UTC' +
        (several ? ' in drive ' + (driveOf[i] + 1) : '');
    return kind.title + ' over time: least ' + at(least) + ', greatest ' + at(greatest);
}

function addChart(kind) {
    const figure = element('figure', 'chart');
    const caption = element('figcaption', 'caption', kind.title + (kind.unit && ', ' + kind.unit));
    const reading = element('span', 'reading');
    caption.append(reading);
    figure.append(caption);
    box.append(figure);
    const indices = times.map((_, i) => i).filter((i) => isShown(kind, i));
    if (indices.length === 0) {
        figure.append(element('p', 'none', several ? 'None in these traces.' : 'None in this trace.'));
        return;
    }
    const frame = element('div', 'plot');
    const canvas = element('div', 'canvas');
    canvas.setAttribute('role', 'img');
    canvas.setAttribute('aria-label', describe(kind, indices));
    const hair = element('div', 'hair');
    const band = element('div', 'band');
    frame.append(canvas, band, hair);
    figure.append(frame);
    charts.push({kind, frame, canvas, hair, band, reading, dots: [], rows: rowsOf(kind)});
}

// Where time is left out, or another drive begins.
function drawCuts(canvas, area, graph) {
    canvas.strokeStyle = colour('--axis');
    canvas.setLineDash([2, 4]);
    for (const cut of axis.cuts) {
        const x = Math.round(graph.toDomXCoord(cut)) + 0.5;
        canvas.beginPath();
        canvas.moveTo(x, area.y);
        canvas.lineTo(x, area.y + area.h);
        canvas.stroke();
    }
    canvas.setLineDash([]);
}

function drawChart(chart, isLast, window) {
    const kind = chart.kind;
    const names = drives.map((drive) => several ? String(drive.number + 1) : kind.title);
    chart.canvas.style.height = (kind.height + (isLast ? 22 : 0)) + 'px';
    const options = Object.assign({
        labels: ['x', ...names],
        series: Object.fromEntries(names.map((name, i) =>
            [name, {strokePattern: PATTERNS[Math.floor(i / COLOURS) % PATTERNS.length]}])),
        legend: 'never',
        showLabelsOnHighlight: false,
        highlightCircleSize: 0,
        interactionModel: {},
        labelsUTC: true,
        dateWindow: window,
        stepPlot: !!kind.steps,
        fillGraph: !!kind.fill && !several,
        fillAlpha: 0.12,
        connectSeparatedPoints: several,
        strokeWidth: 1.5,
        pointSize: 2,
        axisLabelFontSize: 12,
        xAxisHeight: isLast ? 22 : 4,
        rightGap: 12,
        underlayCallback: drawCuts,
        axes: {
            x: {
                ticker: ticksOf,
                axisLabelFormatter: timeLabel,
                axisLabelWidth: 90,
                drawAxis: true,
            },
            y: {axisLabelWidth: 44, pixelsPerLabel: 28,
                valueRange: rangeOf(kind, chart.rows, window)},
        },
    }, looks());
    if (!isLast) {
        options.axes.x.ticker = (...given) => ticksOf(...given).map((tick) => ({v: tick.v, label: ''}));
    }
    if (kind.steps) {
        options.axes.y.ticker = wholeTicks;
    }
    chart.graph = new Dygraph(chart.canvas, chart.rows, options);
    chart.frame.chart = chart.graph;
}

function makeCharts(window) {
    KINDS.forEach(addChart);
    charts.forEach((chart, i) => drawChart(chart, i === charts.length - 1, window));
    if (charts.length > 0) {
        box.append(element('p', 'axis-name'));
    }
}

// \param isNew  whether moments have moved on the axis
function redrawCharts(window, isNew) {
    for (const chart of charts) {
        const options = looks();
        if (isNew) {
            chart.rows = rowsOf(chart.kind);
            options.file = chart.rows;
        }
        options.dateWindow = window;
        options.axes = {y: {valueRange: rangeOf(chart.kind, chart.rows, window)}};
        chart.graph.updateOptions(options);
    }
}

function readingOf(kind, i) {
    const value = data[kind.column][i];
    return value === null ? '–' : kind.column === 'quality' ? qualityText(value)
        : value + (kind.unit && ' ' + kind.unit);
}

// Marks moments of one x: the first is the one that is pointed at.
function markInCharts(moments, window) {
    const x = axis.x[moments[0]];
    const inside = x >= window[0] && x <= window[1];
    for (const chart of charts) {
        chart.hair.hidden = !inside;
        chart.hair.style.left = chart.graph.toDomXCoord(x) + 'px';
        chart.hair.style.height = chart.graph.getArea().h + 'px';
        while (chart.dots.length < moments.length) {
            chart.dots.push(element('div', 'spot'));
            chart.frame.append(chart.dots[chart.dots.length - 1]);
        }
        chart.dots.forEach((dot, number) => {
            const i = moments[number];
            dot.hidden = !inside || i === undefined || !isShown(chart.kind, i);
            if (!dot.hidden) {
                dot.style.left = chart.graph.toDomXCoord(axis.x[i]) + 'px';
                dot.style.top = chart.graph.toDomYCoord(data[chart.kind.column][i]) + 'px';
            }
        });
        chart.reading.replaceChildren(...moments.slice(0, COLOURS).map((i) => {
            const text = several ? (driveOf[i] + 1) + ': ' : '';
            const made = element('span', several ? 't' + driveOf[i] % COLOURS : '',
                text + readingOf(chart.kind, i));
            return made;
        }));
    }
}
