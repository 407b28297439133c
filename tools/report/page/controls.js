// What is shown of it, and how people choose that: keys, buttons, lists.

const slider = byId('slider');
const select = byId('parts');
const button = (id) => byId('zoom-' + id);

let here = 0;            // the moment that is pointed at
let part = everything;   // that was chosen
let home = [0, 1];       // its span on the axis
let view = [0, 1];       // the span in view

const isInView = (i) => axis.x[i] >= view[0] && axis.x[i] <= view[1];

// The drives whose place is shown on the map.
function shownDrives() {
    const drive = drives[driveOf[here]];
    const one = part !== everything && several ? part : null;
    return one ? [one] : drives.filter((other) => other.group === drive.group);
}

function momentsInView() {
    const found = [];
    for (const drive of drives) {
        const order = axis.orders[drive.number];
        for (let i = firstFrom(drive.number, view[0]); i < order.length && isInView(order[i]); ++i) {
            found.push(order[i]);
        }
    }
    return found;
}

// The moment that is pointed at and, of drives that lie over each other, those beside it.
function moments() {
    const others = !axis.over ? [] : drives.filter((drive) => drive.number !== driveOf[here])
        .map((drive) => nearestAt(drive.number, axis.x[here]))
        .filter((i) => i >= 0 && Math.abs(axis.x[i] - axis.x[here]) < (view[1] - view[0]) / 20);
    return [here, ...others];
}

function showMoment() {
    byId('moment-time').textContent = utcText(here);
    byId('moment-values').replaceChildren(...valuesOf(here).map(([name, value]) => {
        const pair = element('div', '');
        pair.append(element('dt', '', name), element('dd', '', value));
        return pair;
    }));
    byId('moment-line').textContent = texts[2 * here + 1];
    slider.value = here;
    slider.setAttribute('aria-valuetext', spokenText(here));
}

function markMoment() {
    const all = moments();
    markInCharts(all, view);
    if (track) {
        markInTrack(all);
    }
}

function choose(i) {
    const before = drives[driveOf[here]].group;
    here = Math.max(0, Math.min(count - 1, i));
    showMoment();
    if (track && before !== drives[driveOf[here]].group) {
        redrawTrack();
    }
    markMoment();
}

// ---- Zoom

function show(first, last) {
    const [begin, end] = home;
    // Less than a tenth of a second, or of a metre, cannot be told apart by a receiver.
    const least = axis.along === 'time' ? 100 : 0.1;
    const length = Math.min(Math.max(last - first, least), end - begin);
    const centre = (first + last) / 2;
    const low = Math.min(Math.max(centre - length / 2, begin), end - length);
    view = [low, low + length];
    redraw();
}

// The part in view, and how many fixes it has, unless not all of them are drawn.
function shownText(inView) {
    const isHome = view[0] <= home[0] && view[1] >= home[1];
    const number = drives.some((drive) => drive.fixes > drive.count) ? ''
        : grouped(inView.length) + (inView.length === 1 ? ' fix' : ' fixes');
    if (isHome || inView.length === 0 || axis.over) {
        return number;
    }
    const [first, last] = [inView[0], inView[inView.length - 1]];
    const span = axis.along === 'distance'
        ? lengthText(data.way[first]) + ' to ' + lengthText(data.way[last])
        : spanText(times[first], times[last]);
    return span + (number && ', ' + number);
}

function redrawTrack() {
    const whole = shownDrives();
    fitMap(momentsInView().filter((i) => whole.includes(drives[driveOf[i]])), whole);
}

function redraw(isNew) {
    redrawCharts(view, isNew);
    if (track) {
        redrawTrack();
    }
    const inView = momentsInView();
    const isHome = view[0] <= home[0] && view[1] >= home[1];
    byId('shown').textContent = shownText(inView);
    box.querySelectorAll('.axis-name').forEach((name) => {
        name.textContent = axisName(inView.length > 0 ? inView : [here]);
    });
    button('all').disabled = button('out').disabled = isHome;
    markMoment();
}

function zoom(factor, centre) {
    const x = centre !== undefined ? centre : isInView(here) ? axis.x[here] : (view[0] + view[1]) / 2;
    show(x - (x - view[0]) * factor, x + (view[1] - x) * factor);
}

const goBack = () => show(...home);

// A step beyond what is in view takes the view along.
function step(by) {
    choose(here + by);
    if (!isInView(here)) {
        if (axis.x[here] < home[0] || axis.x[here] > home[1]) {
            setPart(everything);
        } else {
            const half = (view[1] - view[0]) / 2;
            show(axis.x[here] - half, axis.x[here] + half);
        }
    }
    if (document.activeElement !== slider) {
        byId('spoken').textContent = spokenText(here);
    }
}

// ---- Parts, and the axis

function setPart(chosen, isNew) {
    part = chosen;
    select.value = parts.indexOf(part);
    home = spanOf(part);
    view = home;
    if (here < part.begin || here >= part.end) {
        choose(fastestIn(part.begin, part.end));
    }
    redraw(isNew);
}

function setAxis() {
    axis.over = byId('layout').value === 'over';
    axis.along = byId('along').value;
    layOut();
    setPart(part, true);
}

function partName(one, number) {
    return several ? (one.number + 1) + ': ' + one.name
        : (number + 1) + ': ' + spanText(times[one.begin], times[one.end - 1]);
}

function listParts() {
    const option = (value, text) => {
        const made = element('option', '', text);
        made.value = value;
        select.append(made);
    };
    option(-1, 'all');
    parts.forEach((one, number) => option(number, partName(one, number)));
    select.addEventListener('change', () => setPart(parts[select.value] || everything));
    byId('parts-label').hidden = parts.length === 1;
    byId('layout-label').hidden = !several;
    for (const name of document.querySelectorAll('.drives .name')) {
        const drive = drives[name.dataset.drive];
        const made = element('button', '', name.textContent);
        made.type = 'button';
        made.disabled = drive.count === 0;
        made.addEventListener('click', () => setPart(drive));
        name.replaceChildren(made);
    }
    for (const id of ['layout', 'along']) {
        byId(id).addEventListener('change', setAxis);
    }
}

// ---- Keys: where nothing of them has the focus, they are the browser's.

function actionsFor(target, isFast) {
    const many = isFast ? 10 : 1;
    const actions = {
        ArrowLeft: () => step(-many),
        ArrowRight: () => step(many),
        Home: () => step(-here),
        End: () => step(count - 1 - here),
        '+': () => zoom(0.5),
        '-': () => zoom(2),
        Escape: () => {
            stopDragging();
            goBack();
        },
    };
    return target !== slider ? actions : Object.assign(actions, {
        ArrowDown: actions.ArrowLeft,
        ArrowUp: actions.ArrowRight,
        PageDown: () => step(-100),
        PageUp: () => step(100),
    });
}

function listenToKeys() {
    for (const target of [box, track, slider]) {
        if (target) {
            target.addEventListener('keydown', (event) => {
                const actions = actionsFor(target, event.shiftKey);
                if (!event.ctrlKey && !event.altKey && !event.metaKey &&
                    Object.prototype.hasOwnProperty.call(actions, event.key)) {
                    event.preventDefault();
                    actions[event.key]();
                }
            });
        }
    }
}

// ---- Size and colours of the page

function listenToThePage() {
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
        const place = track.closest('.place');
        new ResizeObserver(() => {
            placeMarks();
            // What gets the focus is not to come to lie behind what stays in sight.
            const stays = getComputedStyle(place).position === 'sticky';
            document.documentElement.style.scrollPaddingTop = stays ? place.offsetHeight + 8 + 'px' : '';
        }).observe(place);
    }
    for (const query of ['(prefers-color-scheme: dark)', '(forced-colors: active)', 'print']) {
        matchMedia(query).addEventListener('change', () => redraw());
    }
}

function begin() {
    layOut();
    const main = drives.filter((drive) => drive.group === 0 && drive.count > 0)
        .reduce((best, drive) => best && best.valid >= drive.valid ? best : drive, null) ||
        drives[driveOf[0]];
    here = fastestIn(main.begin, main.end);
    home = view = spanOf(everything);
    slider.max = count - 1;
    listParts();
    for (const id of ['moment', 'tools', 'slider-box', 'hint']) {
        byId(id).hidden = false;
    }
    makeCharts(view);
    box.tabIndex = 0;
    charts.forEach(listenTo);
    if (track) {
        track.setAttribute('tabindex', '0');
        listenToTrack();
    }
    listenToKeys();
    slider.addEventListener('input', () => step(Number(slider.value) - here));
    button('in').addEventListener('click', () => zoom(0.5));
    button('out').addEventListener('click', () => zoom(2));
    button('all').addEventListener('click', goBack);
    showMoment();
    setPart(everything);
    listenToThePage();
}

if (count > 0) {
    begin();
}
