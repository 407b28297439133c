// Draws the charts and ties them, the track and the values beside it together.
(function () {
    'use strict';

    const byId = (id) => document.getElementById(id);
    const data = JSON.parse(byId('data').textContent);
    if (data.steps.length === 0) {
        return;
    }

    // ---- The moments of the page, in order of time

    // Bytes, in which "~" and three digits stand for a piece of what was written before.
    function expand(coded, length) {
        const digits = data.digits;
        const out = new Uint8Array(length);
        let end = 0;
        for (let i = 0; i < coded.length; ++i) {
            const c = coded[i];
            if (c !== '~' || coded[i + 1] === '~') {
                out[end++] = coded.charCodeAt(i);
                i += c === '~' ? 1 : 0;
                continue;
            }
            const back = digits.indexOf(coded[i + 1]) * digits.length + digits.indexOf(coded[i + 2]);
            for (let n = digits.indexOf(coded[i + 3]) + data.shortest; n > 0; --n, ++end) {
                out[end] = out[end - back];
            }
            i += 3;
        }
        return new TextDecoder().decode(out);
    }

    const count = data.steps.length;
    const texts = expand(data.texts, data.textLength).split('\n');
    const nanoseconds = [];  // since 1970
    const times = [];        // milliseconds, for the charts
    let stamp = BigInt(data.first);
    for (const step of data.steps) {
        stamp += BigInt(step) * BigInt(data.unit);
        nanoseconds.push(stamp);
        times.push(Number(stamp / 1000000n) + Number(stamp % 1000000n) / 1e6);
    }
    const breaks = new Map(data.breaks);

    // ---- Texts

    const QUALITIES = ['no fix', 'GPS', 'differential', 'PPS', 'RTK', 'RTK float', 'dead reckoning',
        'manual', 'simulated'];
    const DAY = 86400000;

    // As 2026-11-21 12:35:19.5 UTC, with the digits of the fraction that it has.
    function utcText(i) {
        if (nanoseconds[i] === 0n) {
            return 'a time that is not known';
        }
        const date = new Date(Math.floor(Number(nanoseconds[i] / 1000000n))).toISOString();
        const fraction = String(nanoseconds[i] % 1000000000n).padStart(9, '0').replace(/0+$/, '');
        return date.slice(0, date.indexOf('.')).replace('T', ' ') + (fraction && '.' + fraction) + ' UTC';
    }

    function clock(time) {
        return new Date(time).toISOString().replace('T', ' ').slice(0, -5);
    }

    function grouped(number) {
        return String(number).replace(/\B(?=(\d{3})+$)/g, ',');
    }

    function qualityText(quality) {
        return quality + (QUALITIES[quality] ? ' (' + QUALITIES[quality] + ')' : '');
    }

    function valuesOf(i) {
        const unit = (column, text) => data[column][i] === null ? null : data[column][i] + text;
        return [
            ['Position', texts[2 * i] || 'not valid'],
            ['Speed', unit('speed', ' km/h')],
            ['Course', unit('course', '°')],
            ['Altitude', unit('altitude', ' m')],
            ['Satellites', unit('satellites', '')],
            ['Quality', data.quality[i] === null ? null : qualityText(data.quality[i])],
            ['HDOP', unit('hdop', '')],
            ['Message', data.message[i] + (data.traces.length > 1
                ? ' of ' + data.traces[data.trace[i]] : '')],
        ].map(([name, value]) => [name, value === null ? '–' : value]);
    }

    // ---- What is shown: a part of the time, and one moment in it

    // Time without a hole. The first bit of the breaks tells those of all fixes.
    const isHole = (i) => (breaks.get(i) & 1) !== 0;
    const recorded = times.reduce((sum, time, i) =>
        i === 0 || isHole(i) ? sum : sum + time - times[i - 1], 0);

    // How far apart fixes usually are, be it that a tracker reports every two minutes.
    const pauses = times.slice(1).map((time, i) => time - times[i]).sort((a, b) => a - b);
    const usual = pauses[pauses.length >> 1] || 0;

    // Parts are told apart by holes of half an hour, or of what is long for so short a record.
    const longHole = Math.max(60000, Math.min(1800000, 10 * recorded), 10 * usual);
    const parts = [];
    for (let i = 0; i < count; ++i) {
        if (i === 0 || (isHole(i) && times[i] - times[i - 1] > longHole)) {
            parts.push({first: i, last: i, valid: 0});
        }
        const part = parts[parts.length - 1];
        part.last = i;
        part.valid += data.valid[i];
    }

    function spanOf(part) {
        const length = times[part.last] - times[part.first];
        const rim = Math.max(length * 0.01, length === 0 ? 500 : 0);
        return [times[part.first] - rim, times[part.last] + rim];
    }

    const everything = {first: 0, last: count - 1};

    // Where the axis would be next to empty, as of a receiver that once reported another year, the
    // part with the most valid fixes is shown first, of several the last.
    function partToBegin() {
        const filled = parts.reduce((sum, part) => sum + times[part.last] - times[part.first], 0);
        if (parts.length === 1 || times[count - 1] - times[0] < 20 * filled) {
            return everything;
        }
        return parts.reduce((best, part) => part.valid >= best.valid ? part : best);
    }

    let home = partToBegin();
    let view = spanOf(home);
    let here = 0;

    // The first moment that is not before the time.
    function firstFrom(time) {
        let low = 0;
        let high = count;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (times[middle] < time) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    // Indices of the moments in view, [first, behind the last).
    const inView = () => [firstFrom(view[0]), firstFrom(view[1] + 1e-6)];

    function nearestInTime(time) {
        const i = Math.min(firstFrom(time), count - 1);
        return i > 0 && time - times[i - 1] < times[i] - time ? i - 1 : i;
    }

    // ---- Charts

    const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const box = byId('charts');
    const charts = [];

    // It is not used, and sets styles in a way that the page's policy forbids.
    Dygraph.PLUGINS = Dygraph.PLUGINS.filter((plugin) => plugin !== Dygraph.Plugins.Legend);

    // As precise as the steps are; where a day begins its date.
    function timeLabel(time, granularity) {
        const steps = Dygraph.Granularity;
        const text = new Date(time).toISOString();
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

    // Without the labels that would stand beyond the ends of the axis. On a phone they stand closer;
    // dates are short there, for their years are named below.
    function timeTicks(low, high, pixels, options, graph, values) {
        const narrow = pixels < 450;
        const room = high - low > 1000 * DAY ? 50 : narrow && high - low > 5000 ? 62 : 100;
        const ticks = Dygraph.dateTicker(low, high, pixels,
            (name) => name === 'pixelsPerLabel' ? room : options(name), graph, values);
        for (const tick of ticks) {
            if (narrow && /^\d{4}-\d\d-\d\d$/.test(tick.label)) {
                tick.label = tick.label.slice(5);
            }
            const place = (tick.v - low) / (high - low) * pixels;
            const half = (tick.label || '').length * 3.6;
            if (place < half - 6 || place > pixels - half + 10) {
                tick.label = '';
            }
        }
        return ticks;
    }

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

    const KINDS = [
        {column: 'speed', bit: 4, title: 'Speed', unit: 'km/h', height: 170, zero: true, fill: true},
        {column: 'altitude', bit: 8, title: 'Altitude', unit: 'm', height: 150, smallest: 10},
        {column: 'satellites', bit: 16, title: 'Satellites in use', unit: '', height: 110,
            zero: true, steps: true},
        {column: 'quality', bit: 32, title: 'Fix quality', unit: '', height: 110, zero: true,
            steps: true},
    ];

    function rowsOf(kind) {
        const rows = [];
        for (let i = 0; i < count; ++i) {
            const value = data[kind.column][i];
            // Position, speed and altitude that are not valid are no part of the drive.
            if (value === null || (!kind.steps && !data.valid[i])) {
                continue;
            }
            if (rows.length > 0 && (breaks.get(i) & kind.bit)) {
                rows.push([rows[rows.length - 1][0] + 1e-3, NaN]);
            }
            rows.push([times[i], value]);
        }
        return rows;
    }

    function rangeOf(kind, rows) {
        let low = kind.zero ? 0 : Infinity;
        let high = kind.zero ? 1 : -Infinity;
        for (const row of rows) {
            if (row[0] >= view[0] && row[0] <= view[1] && !isNaN(row[1])) {
                low = Math.min(low, row[1]);
                high = Math.max(high, row[1]);
            }
        }
        if (low > high) {
            return [0, 1];
        }
        const smallest = kind.smallest || 0;
        if (high - low < smallest) {
            const middle = (low + high) / 2;
            low = middle - smallest / 2;
            high = middle + smallest / 2;
        }
        const rim = (high - low) * 0.08;
        return [kind.zero ? low : low - rim, high + rim];
    }

    function looks() {
        return {
            colors: [colour('--line')],
            axisLineColor: colour('--axis'),
            gridLineColor: colour('--grid'),
        };
    }

    function describe(kind, rows) {
        let low = null;
        let high = null;
        for (const row of rows) {
            if (!isNaN(row[1])) {
                low = low === null || row[1] < low[1] ? row : low;
                high = high === null || row[1] > high[1] ? row : high;
            }
        }
        const unit = kind.unit && ' ' + kind.unit;
        return kind.title + ' over time: least ' + low[1] + unit + ' at ' + clock(low[0]) +
            ' UTC, greatest ' + high[1] + unit + ' at ' + clock(high[0]) + ' UTC';
    }

    function element(tag, className, text) {
        const made = document.createElement(tag);
        made.className = className;
        made.textContent = text || '';
        return made;
    }

    function addChart(kind) {
        const rows = rowsOf(kind);
        const figure = element('figure', 'chart');
        const caption = element('figcaption', 'caption', kind.title + (kind.unit && ', ' + kind.unit));
        const reading = element('span', 'reading');
        caption.append(reading);
        figure.append(caption);
        if (rows.length === 0) {
            figure.append(element('p', 'none', 'None in this trace.'));
            box.append(figure);
            return;
        }
        const frame = element('div', 'plot');
        const canvas = element('div', 'canvas');
        canvas.setAttribute('role', 'img');
        canvas.setAttribute('aria-label', describe(kind, rows));
        const hair = element('div', 'hair');
        const dot = element('div', 'spot');
        const band = element('div', 'band');
        frame.append(canvas, band, hair, dot);
        figure.append(frame);
        box.append(figure);
        charts.push({kind, rows, figure, frame, canvas, hair, dot, band, reading});
    }

    function drawChart(chart, isLast) {
        const kind = chart.kind;
        chart.canvas.style.height = (kind.height + (isLast ? 22 : 0)) + 'px';
        const options = Object.assign({
            labels: ['Time', kind.title],
            legend: 'never',
            showLabelsOnHighlight: false,
            highlightCircleSize: 0,
            interactionModel: {},
            labelsUTC: true,
            dateWindow: view,
            stepPlot: !!kind.steps,
            fillGraph: !!kind.fill,
            fillAlpha: 0.12,
            strokeWidth: 1.5,
            pointSize: 2,
            axisLabelFontSize: 12,
            xAxisHeight: isLast ? 22 : 4,
            rightGap: 12,
            axes: {
                x: {
                    ticker: timeTicks,
                    axisLabelFormatter: isLast ? timeLabel : () => '',
                    axisLabelWidth: 90,
                },
                y: {axisLabelWidth: 44, pixelsPerLabel: 28, valueRange: rangeOf(kind, chart.rows)},
            },
        }, looks());
        if (kind.steps) {
            options.axes.y.ticker = wholeTicks;
        }
        chart.graph = new Dygraph(chart.canvas, chart.rows, options);
        chart.frame.chart = chart.graph;
    }

    KINDS.forEach(addChart);
    charts.forEach((chart, i) => drawChart(chart, i === charts.length - 1));
    if (charts.length > 0) {
        box.append(element('p', 'axis-name'));
    }

    function redrawCharts() {
        for (const chart of charts) {
            chart.graph.updateOptions(Object.assign({
                dateWindow: view,
                axes: {y: {valueRange: rangeOf(chart.kind, chart.rows)}},
            }, looks()));
        }
    }

    // ---- Track

    const track = byId('track');
    const FULL = track ? track.viewBox.baseVal : null;
    const full = track ? {x: FULL.x, y: FULL.y, width: FULL.width, height: FULL.height} : null;

    function roundDown(value) {
        const power = Math.pow(10, Math.floor(Math.log10(value)));
        return power * (value >= 5 * power ? 5 : value >= 2 * power ? 2 : 1);
    }

    // Marks keep their size, whatever the picture's.
    function placeMarks() {
        if (track.clientWidth === 0) {
            return;
        }
        const shown = track.viewBox.baseVal;
        const units = Math.max(shown.width / track.clientWidth, shown.height / track.clientHeight);
        const share = shown.width / full.width;
        const placed = {
            'scale-text': [shown.x + 300 * share, shown.y + shown.height - 450 * share],
            'north': [shown.x + shown.width - 400 * share, shown.y + 500 * share],
        };
        for (const mark of track.querySelectorAll('.mark')) {
            const [x, y] = placed[mark.id] || [mark.dataset.x, mark.dataset.y];
            mark.setAttribute('transform', 'translate(' + x + ' ' + y + ') scale(' + units + ')');
        }
        const length = roundDown(data.metresPerUnit * shown.width / 4);
        const [x, y] = placed['scale-text'];
        const tick = 8 * units;
        byId('scale-bar').setAttribute('d', 'M' + x + ' ' + y + 'v' + tick + 'h' +
            length / data.metresPerUnit + 'v' + -tick);
        byId('scale-length').textContent = length >= 1000 ? length / 1000 + ' km' : length + ' m';
    }

    // The part of the track that is in view is marked, and fills the picture.
    function redrawTrack() {
        const [first, end] = inView();
        const all = !data.valid.some((valid, i) => valid && (i < first || i >= end));
        let path = '';
        let [west, east, north, south] = [Infinity, -Infinity, Infinity, -Infinity];
        for (let i = first; i < end; ++i) {
            if (!data.valid[i]) {
                continue;
            }
            const [x, y] = [data.x[i], data.y[i]];
            path += (path === '' || (breaks.get(i) & 2) ? 'M' : 'L') + x + ' ' + y;
            [west, east] = [Math.min(west, x), Math.max(east, x)];
            [north, south] = [Math.min(north, y), Math.max(south, y)];
        }
        byId('chosen').setAttribute('d', all ? '' : path);
        let shown = full;
        if (!all && path !== '') {
            // Beyond a twentieth the units of the picture would show.
            const width = Math.max((east - west) * 1.3, (south - north) * 1.3 * full.width / full.height,
                full.width / 20);
            if (width < full.width) {
                const height = width * full.height / full.width;
                shown = {x: (west + east - width) / 2, y: (north + south - height) / 2, width, height};
            }
        }
        track.setAttribute('viewBox', [shown.x, shown.y, shown.width, shown.height].join(' '));
        placeMarks();
    }

    function nearestInPlace(x, y) {
        const [first, end] = inView();
        let best = -1;
        let least = Infinity;
        for (let i = first; i < end; ++i) {
            const distance = data.valid[i]
                ? (data.x[i] - x) * (data.x[i] - x) + (data.y[i] - y) * (data.y[i] - y) : Infinity;
            if (distance < least) {
                least = distance;
                best = i;
            }
        }
        return best;
    }

    // ---- The moment that is pointed at

    const slider = byId('slider');

    function showMoment() {
        byId('moment-time').textContent = utcText(here);
        byId('moment-values').replaceChildren(...valuesOf(here).map(([name, value]) => {
            const pair = element('div', '');
            pair.append(element('dt', '', name), element('dd', '', value));
            return pair;
        }));
        byId('moment-line').textContent = texts[2 * here + 1];
        slider.value = here;
        slider.setAttribute('aria-valuetext', utcText(here) + ', ' +
            valuesOf(here).map((pair) => pair.join(' ')).join(', '));
    }

    function markMoment() {
        const inside = times[here] >= view[0] && times[here] <= view[1];
        for (const chart of charts) {
            const area = chart.graph.getArea();
            const value = data[chart.kind.column][here];
            const drawn = inside && value !== null && (chart.kind.steps || data.valid[here]);
            const x = chart.graph.toDomXCoord(times[here]);
            chart.hair.hidden = !inside;
            chart.hair.style.left = x + 'px';
            chart.hair.style.height = area.h + 'px';
            chart.dot.hidden = !drawn;
            if (drawn) {
                chart.dot.style.left = x + 'px';
                chart.dot.style.top = chart.graph.toDomYCoord(value) + 'px';
            }
            chart.reading.textContent = value === null ? '–'
                : chart.kind.column === 'quality' ? qualityText(value)
                    : value + (chart.kind.unit && ' ' + chart.kind.unit);
        }
        if (track) {
            const mark = byId('here');
            mark.style.display = data.valid[here] ? '' : 'none';
            mark.dataset.x = data.x[here];
            mark.dataset.y = data.y[here];
            placeMarks();
        }
    }

    function choose(i) {
        here = Math.max(0, Math.min(count - 1, i));
        showMoment();
        markMoment();
    }

    // ---- Zoom

    const button = (id) => byId('zoom-' + id);

    function show(first, last) {
        const [begin, end] = spanOf(home);
        // Less than a tenth of a second cannot be told apart by a receiver.
        const length = Math.min(Math.max(last - first, 100), end - begin);
        const middle = (first + last) / 2;
        const low = Math.min(Math.max(middle - length / 2, begin), end - length);
        view = [low, low + length];
        redraw();
    }

    function redraw() {
        redrawCharts();
        if (track) {
            redrawTrack();
        }
        const [first, end] = inView();
        const [begin, close] = spanOf(home);
        const isHome = view[0] <= begin && view[1] >= close;
        byId('shown').textContent = (isHome ? '' : spanText(view[0], view[1]) + ', ') +
            grouped(end - first) + (end - first === 1 ? ' fix' : ' fixes');
        const ends = end > first ? [times[first], times[end - 1]] : view;
        const days = [...new Set(ends.map((time) => clock(time).slice(0, 10)))].join(' to ');
        box.querySelectorAll('.axis-name').forEach((name) => {
            name.textContent = 'UTC, ' + days;
        });
        button('all').disabled = button('out').disabled = isHome;
        markMoment();
    }

    function zoom(factor) {
        const inside = times[here] >= view[0] && times[here] <= view[1];
        const centre = inside ? times[here] : (view[0] + view[1]) / 2;
        show(centre - (centre - view[0]) * factor, centre + (view[1] - centre) * factor);
    }

    function goBack() {
        const [begin, end] = spanOf(home);
        show(begin, end);
    }

    // A step beyond what is in view takes the view along.
    function step(by) {
        choose(here + by);
        if (times[here] < view[0] || times[here] > view[1]) {
            const whole = spanOf(home);
            if (times[here] < whole[0] || times[here] > whole[1]) {
                setPart(everything);
                return;
            }
            const half = (view[1] - view[0]) / 2;
            show(times[here] - half, times[here] + half);
        }
    }

    // ---- Pointers

    function timeAt(chart, event) {
        return chart.graph.toDataXCoord(event.clientX - chart.frame.getBoundingClientRect().left);
    }

    function setBand(from, to) {
        for (const chart of charts) {
            chart.band.hidden = from === to;
            const area = chart.graph.getArea();
            const left = Math.max(area.x, chart.graph.toDomXCoord(Math.min(from, to)));
            const right = Math.min(area.x + area.w, chart.graph.toDomXCoord(Math.max(from, to)));
            chart.band.style.left = left + 'px';
            chart.band.style.width = Math.max(0, right - left) + 'px';
            chart.band.style.height = area.h + 'px';
        }
    }

    function listenTo(chart) {
        const frame = chart.frame;
        let begun = null;
        const point = (event) => choose(nearestInTime(timeAt(chart, event)));
        const stop = () => {
            begun = null;
            setBand(0, 0);
        };
        frame.addEventListener('pointerdown', (event) => {
            if (event.pointerType === 'mouse' && event.button === 0) {
                begun = {x: event.clientX, time: timeAt(chart, event)};
                frame.setPointerCapture(event.pointerId);
                event.preventDefault();
            }
            point(event);
        });
        frame.addEventListener('pointermove', (event) => {
            if (begun !== null && Math.abs(event.clientX - begun.x) > 4) {
                setBand(begun.time, timeAt(chart, event));
            }
            point(event);
        });
        frame.addEventListener('pointerup', (event) => {
            const from = begun;
            stop();
            if (from !== null && Math.abs(event.clientX - from.x) > 4) {
                const to = timeAt(chart, event);
                show(Math.max(view[0], Math.min(from.time, to)),
                    Math.min(view[1], Math.max(from.time, to)));
            }
        });
        frame.addEventListener('pointercancel', stop);
        frame.addEventListener('dblclick', goBack);
        chart.stop = stop;
    }
    charts.forEach(listenTo);

    if (track) {
        const point = (event) => {
            const at = new DOMPoint(event.clientX, event.clientY)
                .matrixTransform(track.getScreenCTM().inverse());
            const i = nearestInPlace(at.x, at.y);
            if (i >= 0) {
                choose(i);
            }
        };
        track.addEventListener('pointermove', point);
        track.addEventListener('pointerdown', point);
        track.addEventListener('dblclick', goBack);
    }

    // ---- Keys, slider, buttons

    document.addEventListener('keydown', (event) => {
        const tag = event.target.tagName;
        if (event.ctrlKey || event.altKey || event.metaKey || tag === 'SELECT') {
            return;
        }
        const many = event.shiftKey ? 10 : 1;
        const inDrive = byId('drive').contains(event.target);
        const actions = {
            ArrowLeft: () => step(-many),
            ArrowRight: () => step(many),
            Escape: () => {
                charts.forEach((chart) => chart.stop());
                goBack();
            },
            '+': () => zoom(0.5),
            '-': () => zoom(2),
        };
        if (inDrive && event.target !== byId('moment-line')) {
            actions.Home = () => step(-here);
            actions.End = () => step(count - 1 - here);
        }
        if (event.target === slider) {
            Object.assign(actions, {
                ArrowDown: actions.ArrowLeft,
                ArrowUp: actions.ArrowRight,
                PageDown: () => step(-100),
                PageUp: () => step(100),
            });
        }
        if (Object.prototype.hasOwnProperty.call(actions, event.key)) {
            event.preventDefault();
            actions[event.key]();
        }
    });

    slider.max = count - 1;
    slider.addEventListener('input', () => step(Number(slider.value) - here));
    button('in').addEventListener('click', () => zoom(0.5));
    button('out').addEventListener('click', () => zoom(2));
    button('all').addEventListener('click', goBack);

    const select = byId('parts');
    function setPart(part) {
        home = part;
        select.value = parts.indexOf(part);
        view = spanOf(part);
        if (here < part.first || here > part.last) {
            choose(fastestIn(part));
        }
        redraw();
    }

    // The moment to begin with: the fastest, which is easily found in both pictures.
    function fastestIn(part) {
        let best = part.first;
        for (let i = part.first; i <= part.last; ++i) {
            if (data.valid[i] && (!data.valid[best] || data.speed[i] > data.speed[best])) {
                best = i;
            }
        }
        return best;
    }

    const option = (value, text) => {
        const made = element('option', '', text);
        made.value = value;
        select.append(made);
    };
    // The second date only where it is another one.
    function spanText(from, to) {
        const [begin, end] = [clock(from), clock(to)];
        return begin + ' to ' + (begin.slice(0, 10) === end.slice(0, 10) ? end.slice(11) : end);
    }

    option(-1, 'all');
    parts.forEach((part, i) => option(i, (i + 1) + ': ' +
        spanText(times[part.first], times[part.last])));
    select.addEventListener('change', () => setPart(parts[select.value] || everything));
    byId('parts-label').hidden = parts.length === 1;

    for (const id of ['moment', 'tools', 'slider-box', 'hint']) {
        byId(id).hidden = false;
    }
    choose(fastestIn(home));
    setPart(home);

    // ---- Size and colours of the page

    // What was drawn up to here may have made the page so long that it got a scroll bar, and narrower.
    let width = 0;
    new ResizeObserver(() => {
        if (box.clientWidth !== width) {
            width = box.clientWidth;
            charts.forEach((chart) => chart.graph.resize());
            redraw();
        }
    }).observe(box);
    if (track) {
        new ResizeObserver(placeMarks).observe(track);
    }
    for (const query of ['(prefers-color-scheme: dark)', 'print']) {
        matchMedia(query).addEventListener('change', redraw);
    }
})();
