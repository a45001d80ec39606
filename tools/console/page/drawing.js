// New shapes, and what hands and keys do to those that are there.

import * as model from './model.js';
import { Fields, PointsTable } from './fields.js';
import { Picture } from './picture.js';
import { render } from './render.js';
import { $, change, draft, edit, say, seal, shape, state } from './state.js';

const TITLES = { zone: 'New zone', line: 'New line', exclude: 'New exclude zone' };

export function begin(kind) {
    const [width, height] = state.frame;
    const { min, max } = model.limits({ kind: kind === 'exclude' ? kind : 'zone' }, state.kind.points);
    state.drawing = {
        kind: kind === 'exclude' ? 'exclude' : 'zone', title: TITLES[kind], points: [], next: ['', ''],
        cross: [Math.round(width / 2), Math.round(height / 2)], ...(kind === 'line' ? { min: 2, max: 2 } : { min, max }), line: kind === 'line',
    };
    state.selected = state.vertex = null;
    render();
    picture.cross.focus();
}

export function drawPoint(point) {
    const { drawing } = state;
    if (drawing.points.length >= drawing.max)
        return say(`More than ${drawing.max} points aren’t allowed here. Finish with the first point, or give up with Escape.`);
    state.drawing = { ...drawing, points: [...drawing.points, point], cross: point, next: ['', ''] };
    if (drawing.line && state.drawing.points.length === 2) return finish();
    return render();
}

export function undraw() {
    state.drawing = { ...state.drawing, points: state.drawing.points.slice(0, -1) };
    render();
}

export function finish() {
    const { kind, points, min } = state.drawing;
    if (points.length < min) return say(`${min} points are needed here, there are ${points.length}. Set more, or give up with Escape.`);
    state.drawing = null;
    const { doc } = draft();
    const exclude = kind === 'exclude';
    state.selected = exclude ? `excludeZones/${doc.excludeZones.length}` : `rois/${doc.rois.length}`;
    state.vertex = null;
    edit(exclude ? model.addExclude(doc, points) : model.addZone(doc, points, state.kind.zone));
    say('');
    picture.focus(state.selected);
    return undefined;
}

export function giveUp() {
    if (!state.drawing) return;
    state.drawing = null;
    say('');
    render();
    $('add-zone').focus();
}

// On the first point once more: that ends it.
export function drawAtCross() {
    const { points, cross } = state.drawing;
    if (points.length && model.equal(points[0], cross)) finish();
    else drawPoint(cross);
}

export const picture = new Picture($('picture'), {
    select: (key, vertex) => {
        if (state.selected === key && state.vertex === vertex) return;
        state.selected = key;
        state.vertex = vertex;
        render();
    },
    dragPoint: (start, vertex, point) => edit(model.setPoint(draft().doc, start, vertex, point), 'drag'),
    dragShape: (start, by) => edit(model.moveShape(draft().doc, start, by, state.frame), 'drag'),
    dragged: cancelled => {
        if (cancelled) change(model.edit(draft(), draft().past.at(-1), 'drag'));
        seal();
    },
    move: (key, vertex, by) => {
        const { doc } = draft();
        const moved = model.shapeOf(doc, key);
        edit(vertex === null ? model.moveShape(doc, moved, by, state.frame) : model.movePoint(doc, moved, vertex, by, state.frame));
    },
    remove: (key, vertex) => (vertex === null ? removeShape(key) : removePoint(key, vertex)),
    draw: drawPoint, close: finish, drawAtCross,
    cross: by => {
        const { cross } = state.drawing;
        state.drawing = { ...state.drawing, cross: model.inFrame([cross[0] + by[0], cross[1] + by[1]], state.frame) };
        render();
    },
});

export function removeShape(key) {
    const { doc } = draft();
    const gone = model.shapeOf(doc, key);
    if (!gone) return;
    const left = model.removeShape(doc, gone);
    const keys = model.shapes(left).map(one => one.key);
    const next = keys.includes(key) ? key : keys.findLast(one => one.split('/')[0] === key.split('/')[0]);
    state.selected = next ?? null;
    state.vertex = null;
    edit(left);
    if (next) picture.focus(next);
    else $('add-zone').focus();
}

export function removePoint(key, vertex) {
    const { doc } = draft();
    const from = model.shapeOf(doc, key);
    const { min } = model.limits(from, state.kind.points);
    if (!from.points[vertex]) return;
    if (from.points.length <= min) return say(`${from.title} needs ${min} points at least. Delete it as a whole, or move the point.`);
    state.vertex = Math.min(vertex, from.points.length - 2);
    edit(model.removePoint(doc, from, vertex));
    picture.focus(key, state.vertex);
}

export function addPoint() {
    const to = shape();
    const after = state.vertex ?? to.points.length - 1;
    state.vertex = after + 1;
    edit(model.addPoint(draft().doc, to, after));
    picture.focus(to.key, state.vertex);
}

export const points = new PointsTable($('points'), {
    point: (index, axis, value) => {
        if (!state.drawing) return edit(model.put(draft().doc, `${shape().at}/${index}/${axis}`, value), `${shape().at}/${index}/${axis}`);
        const drawing = { ...state.drawing };
        if (index < drawing.points.length) drawing.points = model.put(drawing.points, `${index}/${axis}`, value);
        else drawing.next = model.put(drawing.next, `${axis}`, value);
        if (drawing.next.every(Number.isInteger) && drawing.points.length < drawing.max) {
            drawing.points = [...drawing.points, drawing.next];
            drawing.next = ['', ''];
        }
        state.drawing = drawing;
        return render();
    },
    seal: () => seal(),
    select: index => {
        if (state.drawing || state.vertex === index) return;
        state.vertex = index;
        render();
    },
    // A line ends here as well: the table can't tell its last digit before.
    last: index => {
        seal();
        if (state.drawing && index >= state.drawing.points.length - 1) finish();
    },
});

const onField = { input: (path, value) => edit(model.put(draft().doc, path, value), path), seal };
export const behaviorFields = new Fields($('behavior-fields'), onField);
export const zoneFields = new Fields($('zone-fields'), onField);
