// All of it on the screen.

import * as model from './model.js';
import { behaviorList, profileList, shapeList } from './choosing.js';
import { behaviorFields, picture, points, zoneFields } from './drawing.js';
import { element } from './fields.js';
import { $, behaviorNow, draft, profileNow, shape, state } from './state.js';

const byPointer = () => Map.groupBy(state.findings, ({ field }) => field ?? '');

export function render() {
    const history = draft();
    const shapes = history ? model.shapes(history.doc).map(one => ({ ...one, direction: model.get(history.doc, `${one.key}/direction`) })) : [];
    const wrong = new Set(shapes.filter(one => state.findings.some(({ field }) => `${field ?? ''}/`.startsWith(`/${one.key}/`))).map(one => one.key));
    profileList.show(state.profiles.map(({ id, name, running }) => ({ value: id, name, state: running ? 'running' : '' })), state.profile);
    behaviorList.show(state.behaviors.map(({ id, name, state: now }) => ({ value: id, name, state: now })), state.behavior);
    shapeList.show(shapes.map(one => ({ value: one.key, name: one.title, state: model.isUnset(one) ? 'not drawn' : '' })), state.selected);
    picture.render({ frame: state.frame, shapes, selected: state.selected, vertex: state.vertex, drawing: state.drawing, wrong });
    renderButtons(history, shapes);
    renderFields(history);
    renderDrawing();
    renderFindings();
    renderRatio();
}

export function renderButtons(history, shapes) {
    const busy = !history || !!state.drawing;
    const { rois, excludeZones } = history?.doc ?? {};
    const set = (id, hidden, disabled) => Object.assign($(id), { hidden, disabled });
    set('add-zone', !!history && !rois, busy);
    set('add-line', !rois || state.kind.points.min > 2, busy);
    set('add-exclude', !excludeZones, busy);
    const chosen = shape();
    set('copy-zone', !!history && !rois && !shapes.length, busy || !chosen);
    set('delete-zone', !!history && !rois && !shapes.length, busy || !chosen);
    set('undo', false, !(state.drawing ? state.drawing.points.length : history?.past.length));
    set('redo', false, busy || !history.future.length);
    for (const id of ['save', 'review']) set(id, false, busy);
    set('discard', false, !history || (!state.drawing && !model.isChanged(history)));
    for (const id of ['rename', 'delete']) set(id, false, !profileNow());
    set('run', false, !profileNow() || profileNow().running);
    set('stop', false, !profileNow()?.running);
    const { min, max } = chosen ? model.limits(chosen, state.kind.points) : {};
    set('add-point', false, busy || !chosen || chosen.points.length >= max);
    set('delete-point', false, busy || !chosen || state.vertex === null || chosen.points.length <= min);
    $('no-profiles').hidden = state.profiles.length > 0;
    $('save').classList.toggle('changed', !!history && model.isChanged(history));
}

export function renderFields(history) {
    const findings = byPointer();
    const behavior = behaviorNow();
    const reason = behavior?.state.startsWith('unavailable') ? behavior.why : '';
    $('behavior-title').textContent = behavior?.name ?? 'Behavior';
    $('reason').hidden = !reason;
    $('reason').textContent = reason ?? '';
    $('behavior-section').hidden = !history;
    if (history) behaviorFields.show(history.doc, findings);
    const chosen = shape();
    const zone = chosen?.kind === 'zone' && !state.drawing;
    $('shapes-section').hidden = !history || (!history.doc.rois && !model.shapes(history.doc).length);
    $('no-shapes').hidden = !history || model.shapes(history.doc).length > 0;
    $('shape-section').hidden = !chosen && !state.drawing;
    $('shape-title').textContent = state.drawing?.title ?? chosen?.title ?? '';
    $('zone-fields').hidden = !zone;
    if (zone) zoneFields.show(history.doc, findings);
    const { drawing } = state;
    if (drawing) points.show(drawing.points, { vertex: null, more: drawing.points.length < drawing.max ? drawing.next : null });
    else points.show(chosen ? model.get(history.doc, chosen.at) : [], { vertex: state.vertex, findings, at: chosen?.at });
}

export function renderDrawing() {
    const { drawing } = state;
    $('guide').hidden = !drawing;
    if (!drawing) return;
    const left = drawing.max - drawing.points.length;
    $('guide-text').textContent = drawing.line ? 'Click where the line begins and ends.'
        : drawing.points.length < drawing.min ? 'Click on the picture to set points, or move the cross with the arrow keys and press Enter.'
            : left > 0 ? 'Click the first point to finish, or set more points.' : 'No more points are allowed: click the first point to finish.';
    $('finish').disabled = drawing.points.length < drawing.min;
}

export function renderFindings() {
    $('findings').hidden = !state.findings.length || !draft();
    $('findings').replaceChildren(...state.findings.map(({ level, text }) => element('li', { class: level, dir: 'auto' }, text)));
}

function renderRatio() {
    const [width, height] = state.picture ?? state.frame;
    const [w, h] = state.frame;
    const other = Math.abs(width * h - w * height) > 0.02 * w * height;
    $('picture-note').hidden = !other;
    $('picture-note').textContent = other ? `The picture has ${width} × ${height} pixels, another ratio than the frame ${w} × ${h}: it is shown stretched to the frame. Coordinates count in the frame.` : '';
}
