// A document as the program gives it, and the steps of editing it. Pure functions: nothing here touches the page,
// and nothing is changed in place.

// Shapes of two points, told apart by their place in the document.
const PAIRS = [
    ['filters/objectsizes/minObj', 'Smallest object', 'box'],
    ['filters/objectsizes/maxObj', 'Largest object', 'box'],
    ['filters/objectsizes/avgObj', 'Average object', 'box'],
    ['calibration/objectsizes/object1', 'Object near left', 'box'],
    ['calibration/objectsizes/object3', 'Object near right', 'box'],
    ['calibration/objectsizes/object2', 'Object at distance', 'box'],
    ['calibration/fovs/nearWidth', 'Near width', 'line'],
    ['calibration/fovs/farWidth', 'Far width', 'line'],
];

const parts = path => (path === '' ? [] : path.split('/'));

export const get = (value, path) => parts(path).reduce((at, part) => at?.[part], value);

export function put(value, path, to) {
    const [first, ...rest] = parts(path);
    const copy = Array.isArray(value) ? [...value] : { ...value };
    copy[first] = rest.length ? put(value[first], rest.join('/'), to) : to;
    return copy;
}

export function equal(a, b) {
    if (a === b) return true;
    if (typeof a !== 'object' || typeof b !== 'object' || !a || !b || Array.isArray(a) !== Array.isArray(b)) return false;
    const keys = Object.keys(a);
    return keys.length === Object.keys(b).length && keys.every(key => Object.hasOwn(b, key) && equal(a[key], b[key]));
}

// A coordinate that is being typed, and is no number yet, is drawn at 0.
const drawn = points => points.map(point => point.map(value => (Number.isInteger(value) ? value : 0)));

// ---- shapes -----------------------------------------------------------------------------------

// All that is drawn of the document: { key, kind: zone | exclude | box | line, title, name, points, at }.
// `key` is where the shape stands in the document, `at` where its points do.
export function shapes(doc) {
    const excludes = (doc?.excludeZones ?? []).map((points, i) => {
        const title = `Exclude zone ${i + 1}`;
        return { key: `excludeZones/${i}`, at: `excludeZones/${i}`, kind: 'exclude', title, name: title, points: drawn(points) };
    });
    const zones = (doc?.rois ?? []).map((zone, i) => ({
        key: `rois/${i}`, at: `rois/${i}/vertices`, kind: 'zone', title: `Zone ${zone.name}`, name: zone.name, points: drawn(zone.vertices),
    }));
    const pairs = PAIRS.filter(([key]) => get(doc, key)).map(([key, title, kind]) => ({
        key, at: key, kind, title, name: title, points: drawn(get(doc, key)),
    }));
    return [...excludes, ...zones, ...pairs];
}

export const shapeOf = (doc, key) => shapes(doc).find(shape => shape.key === key);
export const isPair = shape => shape.kind === 'box' || shape.kind === 'line';
// One of (0, 0), (0, 0) is a shape that nobody has drawn.
export const isUnset = shape => isPair(shape) && shape.points.every(([x, y]) => x === 0 && y === 0);

// How many points a shape may have.
export function limits(shape, bounds) {
    if (isPair(shape)) return { min: 2, max: 2 };
    return shape.kind === 'exclude' ? { min: 3, max: Math.max(bounds.max, 3) } : bounds;
}

// A list with `count` of its items from `at` on replaced.
const spliced = (list, at, count, ...items) => [...list.slice(0, at), ...items, ...list.slice(at + count)];

const within = (value, low, high) => Math.min(Math.max(value, low), high);

// Into the frame, both ends of it inside.
export const inFrame = ([x, y], frame) => [within(Math.round(x), 0, frame[0]), within(Math.round(y), 0, frame[1])];

export const setPoint = (doc, shape, index, point) => put(doc, `${shape.at}/${index}`, point);

// By whole steps. What is in the frame stays there, what is beyond gets no farther away.
export function movePoint(doc, shape, index, by, frame) {
    const point = shape.points[index];
    return setPoint(doc, shape, index, point.map((value, axis) =>
        within(value + by[axis], Math.min(0, value), Math.max(frame[axis], value))));
}

export function moveShape(doc, shape, by, frame) {
    const step = [0, 1].map(axis => {
        const values = shape.points.map(point => point[axis]);
        const low = Math.min(...values), high = Math.max(...values);
        return within(Math.round(by[axis]), Math.min(0, -low), Math.max(0, frame[axis] - high));
    });
    return put(doc, shape.at, shape.points.map(([x, y]) => [x + step[0], y + step[1]]));
}

// In the middle of the edge that follows the point.
export function addPoint(doc, shape, index) {
    const [a, b] = [shape.points[index], shape.points[(index + 1) % shape.points.length]];
    const middle = [Math.round((a[0] + b[0]) / 2), Math.round((a[1] + b[1]) / 2)];
    return put(doc, shape.at, spliced(shape.points, index + 1, 0, middle));
}

export const removePoint = (doc, shape, index) => put(doc, shape.at, spliced(shape.points, index, 1));

export function removeShape(doc, shape) {
    if (isPair(shape)) return put(doc, shape.at, [[0, 0], [0, 0]]);
    const list = shape.kind === 'zone' ? 'rois' : 'excludeZones';
    return put(doc, list, spliced(doc[list], Number(shape.key.split('/')[1]), 1));
}

function freeName(zones) {
    for (let n = 1; ; ++n)
        if (!zones.some(zone => zone.name === `Zone ${n}`)) return `Zone ${n}`;
}

// `template` is what a new zone says of all but its name and points.
export function addZone(doc, points, template) {
    return put(doc, 'rois', [...doc.rois, { ...template, name: freeName(doc.rois), vertices: points }]);
}

export const addExclude = (doc, points) => put(doc, 'excludeZones', [...doc.excludeZones, points]);

// What another document takes of a shape: the fields that its zones have.
export function paste(doc, shape, zone, template) {
    if (isPair(shape)) return get(doc, shape.at) ? put(doc, shape.at, shape.points) : doc;
    if (shape.kind === 'exclude') return addExclude(doc, shape.points);
    const kept = Object.fromEntries(Object.entries(template).map(([key, value]) => [key, zone[key] ?? value]));
    return put(doc, 'rois', [...doc.rois, { ...kept, name: zone.name, vertices: shape.points }]);
}

export function takes(doc, shape) {
    if (isPair(shape)) return get(doc, shape.at) !== undefined;
    return (shape.kind === 'exclude' ? doc.excludeZones : doc.rois) !== undefined;
}

// ---- history ----------------------------------------------------------------------------------

// `base` is what the camera has. Edits with the same `tag` in a row are one step, until sealed.
export const open = doc => ({ base: doc, past: [], doc, future: [], tag: null });

export function edit(history, doc, tag = null) {
    if (equal(doc, history.doc)) return history;
    const joined = tag !== null && tag === history.tag;
    return { ...history, past: joined ? history.past : [...history.past, history.doc], doc, future: [], tag };
}

export function seal(history) {
    const still = history.tag !== null && equal(history.past.at(-1), history.doc);
    return { ...history, tag: null, past: still ? history.past.slice(0, -1) : history.past };
}

export function undo(history) {
    const { base, past, doc, future } = seal(history);
    if (!past.length) return { ...history, tag: null };
    return { base, past: past.slice(0, -1), doc: past.at(-1), future: [doc, ...future], tag: null };
}

export function redo(history) {
    const { base, past, doc, future } = seal(history);
    if (!future.length) return { ...history, tag: null };
    return { base, past: [...past, doc], doc: future[0], future: future.slice(1), tag: null };
}

// The camera has `doc` now, and so does the page.
export const settle = (history, doc) => ({ ...edit(seal(history), doc), base: doc, tag: null });

export const isChanged = history => !equal(history.base, history.doc);
