// The page's model by itself: drawn sequences of edits, undos and redos, over all nine documents.

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import fc from 'fast-check';
import { fieldsOf } from './page/fields.js';
import * as model from './page/model.js';
import { BEHAVIORS } from './documents.js';
import { Client, Service, startConsole } from './room.js';

const RUNS = Number(process.env.CONSOLE_RUNS ?? 1000);
const FRAME = [320, 240];
let service, console_, client, kinds;

before(async () => {
    service = await new Service().start();
    const profile = await service.create('Drawn');
    console_ = await startConsole(['--url', service.url]);
    client = await Client.enter(console_.url);
    kinds = [];
    for (const behavior of [...BEHAVIORS.map(({ id }) => id), 'scene'])
        kinds.push({ behavior, ...(await client.read('document', { camera: 0, profile, behavior })) });
});
after(async () => {
    await console_.stop();
    await service.clean();
});

const point = fc.tuple(fc.integer({ min: -50, max: 400 }), fc.integer({ min: -50, max: 400 }));
const far = fc.tuple(fc.integer({ min: -500, max: 500 }), fc.integer({ min: -500, max: 500 }));
const pick = fc.nat(20);
const number = fc.oneof(fc.integer({ min: 0, max: 10 }), fc.integer({ min: -(2 ** 31), max: 2 ** 31 - 1 }));

const STEPS = {
    addZone: fc.array(point, { minLength: 2, maxLength: 6 }), addExclude: fc.array(point, { minLength: 3, maxLength: 6 }),
    setPoint: fc.tuple(pick, pick, point), drag: fc.tuple(pick, pick, fc.array(point, { minLength: 1, maxLength: 4 })),
    movePoint: fc.tuple(pick, pick, far), moveShape: fc.tuple(pick, far), addPoint: fc.tuple(pick, pick),
    removePoint: fc.tuple(pick, pick), removeShape: pick, field: fc.tuple(pick, number), name: fc.tuple(pick, fc.string({ unit: 'grapheme' })),
    paste: fc.tuple(pick, point), undo: fc.constant(null), redo: fc.constant(null),
};
const steps = fc.array(fc.oneof(...Object.entries(STEPS).map(([name, value]) => fc.tuple(fc.constant(name), value))), { minLength: 2, maxLength: 14, size: 'max' });

const one = (list, index) => list[index % list.length];

// The document after one step; null where there is nothing to do it to.
function stepped(doc, kind, name, given) {
    const shapes = model.shapes(doc);
    const shape = shapes.length && Array.isArray(given) ? one(shapes, given[0]) : null;
    if (name === 'addZone') return doc.rois ? model.addZone(doc, given, kind.zone) : null;
    if (name === 'addExclude') return doc.excludeZones ? model.addExclude(doc, given) : null;
    if (name === 'removeShape') return shapes.length ? model.removeShape(doc, one(shapes, given)) : null;
    if (name === 'field') {
        const fields = fieldsOf(kind.model).filter(({ type }) => type === 'integer');
        if (!fields.length) return null;
        const { field, choices } = one(fields, given[0]);
        return model.put(doc, field, choices ? Math.abs(given[1]) % choices.length : given[1]);
    }
    if (name === 'name') return doc.rois?.length ? model.put(doc, `rois/${given[0] % doc.rois.length}/name`, given[1]) : null;
    if (!shape) return null;
    const vertex = given[1] % shape.points.length;
    const { min, max } = model.limits(shape, kind.points);
    if (name === 'setPoint') return model.setPoint(doc, shape, vertex, model.inFrame(given[2], FRAME));
    if (name === 'movePoint') return model.movePoint(doc, shape, vertex, given[2], FRAME);
    if (name === 'moveShape') return model.moveShape(doc, shape, given[1], FRAME);
    if (name === 'addPoint') return shape.points.length < max ? model.addPoint(doc, shape, vertex) : null;
    if (name === 'removePoint') return shape.points.length > min ? model.removePoint(doc, shape, vertex) : null;
    if (name === 'paste') return model.paste(doc, shape, model.get(doc, shape.key), kind.zone);
    return null;
}

function apply(history, kind, [name, given]) {
    if (name === 'undo') return model.undo(history);
    if (name === 'redo') return model.redo(history);
    if (name !== 'drag') {
        const doc = stepped(history.doc, kind, name, given);
        return doc ? model.edit(history, doc) : history;
    }
    const shape = one(model.shapes(history.doc), given[0]);
    if (!shape) return history;
    let dragged = history;
    for (const to of given[2]) dragged = model.edit(dragged, model.setPoint(dragged.doc, shape, given[1] % shape.points.length, model.inFrame(to, FRAME)), 'drag');
    return model.seal(dragged);
}

test(`undo of everything is the beginning, redo of everything the end, in ${RUNS} drawn sequences`, async () => {
    const states = new Map(kinds.map(kind => [kind, new Set()]));
    fc.assert(fc.property(fc.nat(), steps, (drawn, sequence) => {
        const kind = one(kinds, drawn);
        const frozen = JSON.stringify(kind.document);
        let history = model.open(kind.document);
        for (const step of sequence) {
            const before = history;
            history = apply(history, kind, step);
            states.get(kind).add(JSON.stringify(history.doc));
            assert.ok(history.past.length <= before.past.length + 1, 'one edit is one step');
        }
        const end = history.doc;
        const { past, future } = history;
        for (let i = 0; i < past.length; ++i) history = model.undo(history);
        assert.deepEqual(history.doc, kind.document);
        assert.equal(model.isChanged(history), false);
        assert.deepEqual(model.undo(history).doc, kind.document);
        for (let i = 0; i < past.length; ++i) history = model.redo(history);
        assert.deepEqual(history.doc, end);
        for (const _ of future) history = model.redo(history);
        assert.deepEqual(model.redo(history).doc, history.doc);
        assert.equal(JSON.stringify(kind.document), frozen);
    }), { numRuns: RUNS });

    const all = [...states].flatMap(([{ behavior }, docs]) => [...docs].map(doc => ({ behavior, doc })));
    let checked = 0;
    await Promise.all(Array.from({ length: 4 }, async () => {
        for (let next = all.pop(); next; next = all.pop()) {
            const { findings } = await client.send('check', { camera: 0, behavior: next.behavior, document: JSON.parse(next.doc) });
            assert.deepEqual(findings.filter(({ level }) => level === 'error'), [], next.doc);
            ++checked;
        }
    }));
    console.log(`${RUNS} sequences, ${checked} states checked`);
});

test('what is moved stays in the frame, what is beyond gets no farther away', () => {
    fc.assert(fc.property(fc.array(point, { minLength: 3, maxLength: 6 }), far, fc.nat(5), (points, by, vertex) => {
        const doc = { excludeZones: [points] };
        const [shape] = model.shapes(doc);
        const index = vertex % points.length;
        const moved = model.movePoint(doc, shape, index, by, FRAME).excludeZones[0][index];
        const shifted = model.moveShape(doc, shape, by, FRAME).excludeZones[0];
        for (const axis of [0, 1]) {
            const low = Math.min(0, ...points.map(one => one[axis])), high = Math.max(FRAME[axis], ...points.map(one => one[axis]));
            assert.ok(moved[axis] >= Math.min(0, points[index][axis]) && moved[axis] <= Math.max(FRAME[axis], points[index][axis]));
            for (const [i, to] of shifted.entries()) {
                assert.ok(to[axis] >= low && to[axis] <= high);
                assert.equal(to[axis] - points[i][axis], shifted[0][axis] - points[0][axis], 'a shape keeps its form');
            }
        }
    }), { numRuns: RUNS });
});

test('a coordinate that is no number yet is drawn at 0, and kept as it is typed', () => {
    const doc = { excludeZones: [[['', 5], [10, '-'], [20, 30]]] };
    assert.deepEqual(model.shapes(doc)[0].points, [[0, 5], [10, 0], [20, 30]]);
    assert.deepEqual(model.get(doc, 'excludeZones/0'), [['', 5], [10, '-'], [20, 30]]);
});

test('a value that is changed back is no change, and a drag that comes back is no step', () => {
    const doc = { rois: [{ name: 'Gate', vertices: [[1, 2], [3, 4], [5, 6]] }] };
    const [shape] = model.shapes(doc);
    let history = model.edit(model.open(doc), model.put(doc, 'rois/0/name', 'Door'));
    assert.equal(model.isChanged(history), true);
    history = model.edit(history, model.put(history.doc, 'rois/0/name', 'Gate'));
    assert.equal(model.isChanged(history), false);
    history = model.open(doc);
    for (const to of [[9, 9], [20, 20], [1, 2]]) history = model.edit(history, model.setPoint(history.doc, shape, 0, to), 'drag');
    assert.equal(model.seal(history).past.length, 0);
});
