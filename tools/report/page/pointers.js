// Mouse, fingers and touch pads over the charts and the track.

// ---- The charts

function xAt(chart, clientX) {
    return chart.graph.toDataXCoord(clientX - chart.frame.getBoundingClientRect().left);
}

// Of drives that lie over each other the one whose line is nearest.
function nearestInChart(chart, event) {
    const x = xAt(chart, event.clientX);
    const y = event.clientY - chart.frame.getBoundingClientRect().top;
    const distance = (i) => Math.abs(axis.x[i] - x) / (view[1] - view[0]) * 2000 +
        (axis.over && isShown(chart.kind, i)
            ? Math.abs(chart.graph.toDomYCoord(data[chart.kind.column][i]) - y) : 0);
    return drives.map((drive) => nearestAt(drive.number, x)).filter((i) => i >= 0)
        .reduce((best, i) => distance(i) < distance(best) ? i : best);
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

let dragged = null;  // from where, by the mouse

function stopDragging() {
    dragged = null;
    setBand(0, 0);
}

function listenTo(chart) {
    const frame = chart.frame;
    const isDrag = (event) => dragged !== null && Math.abs(event.clientX - dragged.left) > 4;
    frame.addEventListener('pointerdown', (event) => {
        if (event.pointerType === 'mouse' && event.button === 0) {
            dragged = {left: event.clientX, x: xAt(chart, event.clientX)};
            frame.setPointerCapture(event.pointerId);
            event.preventDefault();
        }
        box.focus({preventScroll: true});
        choose(nearestInChart(chart, event));
    });
    frame.addEventListener('pointermove', (event) => {
        if (isDrag(event)) {
            setBand(dragged.x, xAt(chart, event.clientX));
        }
        if (!isPinched) {
            choose(nearestInChart(chart, event));
        }
    });
    frame.addEventListener('pointerup', (event) => {
        const from = isDrag(event) ? dragged.x : null;
        stopDragging();
        if (from !== null) {
            const to = xAt(chart, event.clientX);
            show(Math.max(view[0], Math.min(from, to)), Math.min(view[1], Math.max(from, to)));
        }
    });
    frame.addEventListener('pointercancel', stopDragging);
    frame.addEventListener('dblclick', goBack);
    onPinch(frame, (finger) => xAt(chart, finger.clientX), (begun, fingers) => {
        const [a, b] = fingers.map((finger) => finger.clientX - frame.getBoundingClientRect().left);
        const area = chart.graph.getArea();
        const perPixel = Math.abs(begun[1] - begun[0]) / Math.max(1, Math.abs(b - a));
        const low = (begun[0] + begun[1]) / 2 - ((a + b) / 2 - area.x) * perPixel;
        show(low, low + area.w * perPixel);
    });
    onPinchOfPad(frame, (event, factor) => zoom(factor, xAt(chart, event.clientX)));
}

// ---- Fingers

let isPinched = false;

// Tells of two fingers that move: what begin said of each when they came, and where they are now.
function onPinch(target, begin, move) {
    let begun = null;
    target.addEventListener('touchstart', (event) => {
        isPinched = event.touches.length === 2;
        begun = isPinched ? [...event.touches].map(begin) : null;
    }, {passive: true});
    target.addEventListener('touchmove', (event) => {
        if (begun !== null && event.touches.length === 2) {
            event.preventDefault();
            move(begun, [...event.touches]);
        }
    }, {passive: false});
    for (const end of ['touchend', 'touchcancel']) {
        target.addEventListener(end, (event) => {
            begun = null;
            isPinched = event.touches.length > 0 && isPinched;
        });
    }
}

// Browsers tell of two fingers on a touch pad as of a wheel.
function onPinchOfPad(target, act) {
    target.addEventListener('wheel', (event) => {
        if (event.ctrlKey) {
            event.preventDefault();
            act(event, Math.pow(1.01, Math.max(-50, Math.min(50, event.deltaY))));
        }
    }, {passive: false});
}

function listenToTrack() {
    const point = (event) => {
        const i = isPinched ? -1 : nearestInPlace(pointAt(event));
        if (i >= 0) {
            choose(i);
        }
    };
    track.addEventListener('pointermove', point);
    track.addEventListener('pointerdown', (event) => {
        track.focus({preventScroll: true});
        point(event);
    });
    track.addEventListener('dblclick', goBack);
    onPinch(track, (finger) => placeIn(pointAt(finger)),
        (begun, fingers) => stretchMap(begun, fingers.map(pointAt)));
    onPinchOfPad(track, (event, factor) => {
        const [x, y] = pointAt(event);
        const aside = [x + 1000, y];
        stretchMap([placeIn([x, y]), placeIn(aside)], [[x, y], [x + 1000 / factor, y]]);
    });
}
