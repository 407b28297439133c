// The track: which part of the map is seen, and the marks in it. Places on the map are radians of
// Mercator's projection; what is drawn keeps its own units, and is moved and scaled as a whole.

const track = byId('track');
const WIDTH = 10000;
const HEIGHT = 7600;
const MARGIN = 700;          // for the marks
const MARGIN_BELOW = 1300;   // for the scale bar
const middle = {x: WIDTH / 2, y: (MARGIN + HEIGHT - MARGIN_BELOW) / 2};

// The middle of what is seen, and how many units of the picture a radian has.
let map = {x: 0, y: 0, scale: 1};

// Neighbours lie beside each other over the 180th meridian, too.
for (const drive of drives) {
    if (drive.area) {
        const [left, top, width, height] = drive.area;
        const first = drives.find((other) => other.area && other.group === drive.group);
        const turns = Math.round((first.area[0] + first.area[2] / 2 - left - width / 2) / (2 * Math.PI));
        drive.left = left + turns * 2 * Math.PI;
        drive.top = top;
        drive.smallest = Math.max(width, height) / 20;
    }
}

const placeOf = (drive, x, y) => [drive.left + x * drive.scale, drive.top + y * drive.scale];
const inPicture = ([x, y]) => [middle.x + (x - map.x) * map.scale, middle.y + (y - map.y) * map.scale];
const spotOf = (i) => inPicture(placeOf(drives[driveOf[i]], data.x[i], data.y[i]));

function roundDown(value) {
    const power = Math.pow(10, Math.floor(Math.log10(value)));
    return power * (value >= 5 * power ? 5 : value >= 2 * power ? 2 : 1);
}

// Metres to the east of a radian at the middle of the map, on the ellipsoid.
function metresOfRadian() {
    const sine = Math.tanh(map.y);
    return 6378137 * Math.sqrt((1 - sine * sine) / (1 - 0.00669437999014 * sine * sine));
}

// What keeps its size, whatever the picture's.
function placeMarks() {
    if (track.clientWidth === 0) {
        return;
    }
    const units = Math.max(WIDTH / track.clientWidth, HEIGHT / track.clientHeight);
    const fixed = {'scale-text': [300, HEIGHT - 450], 'north': [WIDTH - 400, 500]};
    for (const mark of track.querySelectorAll('.mark')) {
        const drive = drives[mark.dataset.drive];
        const [x, y] = fixed[mark.id] ||
            (drive ? inPicture(placeOf(drive, mark.dataset.x, mark.dataset.y)) : [-WIDTH, 0]);
        mark.setAttribute('transform',
            'translate(' + x.toFixed(1) + ' ' + y.toFixed(1) + ') scale(' + units + ')');
    }
    const metres = metresOfRadian() / map.scale;
    const length = roundDown(metres * WIDTH / 4);
    const tick = 8 * units;
    byId('scale-bar').setAttribute('d', 'M300 ' + (HEIGHT - 450) + 'v' + tick + 'h' +
        length / metres + 'v' + -tick);
    byId('scale-length').textContent = length >= 1000 ? length / 1000 + ' km' : length + ' m';
}

// The moments in view are marked, unless all of the neighbourhood are.
function markChosen(chosen, all) {
    let path = '';
    let before = -1;
    for (const i of all ? [] : chosen) {
        const [x, y] = spotOf(i);
        const isNew = path === '' || hasBreak(i, NO_PLACE) || driveOf[i] !== driveOf[before];
        path += (isNew ? 'M' : 'L') + x.toFixed(1) + ' ' + y.toFixed(1);
        before = i;
    }
    byId('chosen').setAttribute('d', path);
}

let chosenMoments = [];
let allChosen = true;

function drawMap() {
    for (const lines of track.querySelectorAll('.drive-lines')) {
        const drive = drives[lines.dataset.drive];
        const [x, y] = inPicture(placeOf(drive, 0, 0));
        lines.setAttribute('transform',
            'translate(' + x + ' ' + y + ') scale(' + drive.scale * map.scale + ')');
    }
    markChosen(chosenMoments, allChosen);
    placeMarks();
}

// Valid moments fill the picture; where these are all of their drives, the drives do.
function fitMap(chosen, shownDrives) {
    chosenMoments = chosen.filter((i) => data.valid[i] && drives[driveOf[i]].area);
    const whole = shownDrives.filter((drive) => drive.area);
    allChosen = chosenMoments.length === whole.reduce((sum, drive) => sum + drive.valid, 0);
    const corners = allChosen || chosenMoments.length === 0
        ? [].concat(...whole.map((drive) => [[drive.left, drive.top],
            [drive.left + drive.area[2], drive.top + drive.area[3]]]))
        : chosenMoments.map((i) => placeOf(drives[driveOf[i]], data.x[i], data.y[i]));
    if (corners.length > 0) {
        let [west, east, north, south] = [Infinity, -Infinity, Infinity, -Infinity];
        for (const [x, y] of corners) {
            [west, east] = [Math.min(west, x), Math.max(east, x)];
            [north, south] = [Math.min(north, y), Math.max(south, y)];
        }
        const least = allChosen ? 1e-12 : Math.min(...whole.map((drive) => drive.smallest));
        map = {
            x: (west + east) / 2,
            y: (north + south) / 2,
            scale: Math.min((WIDTH - 2 * MARGIN) / Math.max(east - west, least),
                (HEIGHT - MARGIN - MARGIN_BELOW) / Math.max(south - north, least)),
        };
    }
    drawMap();
}

// Two places of the map come to stand at two points of the picture, or as near as north allows.
function stretchMap([a, b], [atA, atB]) {
    const before = Math.hypot(b[0] - a[0], b[1] - a[1]);
    const now = Math.hypot(atB[0] - atA[0], atB[1] - atA[1]);
    const scale = Math.min(Math.max(now / before, 10), 1e10);
    if (before > 0 && now > 0) {
        map = {
            x: (a[0] + b[0]) / 2 - ((atA[0] + atB[0]) / 2 - middle.x) / scale,
            y: (a[1] + b[1]) / 2 - ((atA[1] + atB[1]) / 2 - middle.y) / scale,
            scale: scale,
        };
        drawMap();
    }
}

const placeIn = ([x, y]) => [map.x + (x - middle.x) / map.scale, map.y + (y - middle.y) / map.scale];

// The point of the picture below the pointer.
function pointAt(event) {
    const at = new DOMPoint(event.clientX, event.clientY).matrixTransform(
        track.getScreenCTM().inverse());
    return [at.x, at.y];
}

function nearestInPlace([x, y]) {
    let best = -1;
    let least = Infinity;
    for (const i of chosenMoments) {
        const [ownX, ownY] = spotOf(i);
        const distance = (ownX - x) * (ownX - x) + (ownY - y) * (ownY - y);
        if (distance < least) {
            least = distance;
            best = i;
        }
    }
    return best;
}

// Of drives along one road the one that is pointed at lies above the others.
function raise(drive) {
    const all = [...track.querySelectorAll('.drive-lines')];
    const own = all.find((lines) => lines.dataset.drive === String(drive));
    if (own !== undefined && own !== all[all.length - 1]) {
        all[all.length - 1].after(own);
    }
}

// Marks moments: the first is the one that is pointed at.
function markInTrack(moments) {
    raise(driveOf[moments[0]]);
    const rings = [...track.querySelectorAll('.here')];
    while (rings.length < moments.length) {
        const ring = rings[0].cloneNode(true);
        ring.removeAttribute('id');
        rings[0].after(ring);
        rings.push(ring);
    }
    rings.forEach((ring, number) => {
        const i = moments[number];
        const drive = i === undefined ? null : drives[driveOf[i]];
        ring.style.display = drive !== null && data.valid[i] && drive.area ? '' : 'none';
        if (drive !== null) {
            ring.dataset.drive = drive.number;
            ring.dataset.x = data.x[i];
            ring.dataset.y = data.y[i];
        }
    });
    placeMarks();
}
