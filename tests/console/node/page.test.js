// Every behavior and the scene, drawn in the browser by mouse, by finger, by keys alone and by the table alone;
// what is stored is compared through SOAP with what was drawn.

import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import { BEHAVIORS, SCENE, taken } from './documents.js';
import { Desk } from './desk.js';
import { PICTURE, Service, startBrowser, startConsole, until } from './room.js';

const WAYS = ['mouse', 'touch', 'keys', 'table'];
let service, console_, browser, desk;

before(async () => {
    service = await new Service().start();
    await service.create('Car park');
    console_ = await startConsole(['--url', service.url, '--picture', PICTURE]);
    browser = await startBrowser();
    desk = await Desk.open(browser, console_.url, { width: 1280, height: 1000, hasTouch: true });
});
after(async () => {
    await browser?.close();
    await console_?.stop();
    await service?.clean();
});

const outline = i => [[40 + 30 * i, 40], [150 + 30 * i, 60 + i], [140 + 20 * i, 190], [50, 200 - i]];

async function newProfile(name) {
    await desk.newProfile(name);
    const list = await service.call('GetProfileList');
    const { id } = /<profile [^>]*?id="(?<id>\d+)"[^>]*>[^<]*<\/profile><\/profileList>/.exec(list).groups;
    return Number(id);
}

// Two corners of a shape that nobody has drawn yet.
async function setPair(name, [a, b], way) {
    const option = await desk.find('option', name);
    await option.evaluate(one => one.click());
    if (way === 'table') {
        for (const [i, [x, y]] of [a, b].entries()) {
            await desk.cell('x', i + 1, x);
            await desk.cell('y', i + 1, y);
        }
    } else if (way === 'keys') {
        for (const [i, [x, y]] of [a, b].entries()) {
            await desk.focus('button', `${name}, point ${i + 1}`);
            await desk.arrows(x, y);
        }
    } else {
        await desk.drag([0, 0], b, way);
        await desk.drag([0, 0], a, way);
    }
}

async function setFields(fields) {
    for (const [label, [, value]] of Object.entries(fields)) await desk.set(label, value);
}

const texts = fields => Object.fromEntries(Object.values(fields).map(([name, value]) => [name, String(value)]));

function some(object, names) {
    return Object.fromEntries(Object.keys(names).map(name => [name, object[name]]));
}

async function drawPairs(pairs) {
    const drawn = {};
    let i = 0;
    for (const [name, inDocument] of Object.entries(pairs)) {
        const corners = [[20 + 7 * i, 30 + 5 * i], [70 + 9 * i, 120 + 3 * i]];
        await setPair(name, corners, WAYS[i++ % WAYS.length]);
        drawn[inDocument] = corners;
    }
    return drawn;
}

async function drawExcludes() {
    const drawn = [];
    for (const [i, way] of WAYS.entries()) {
        const points = [[230, 20 + 10 * i], [300, 30 + 10 * i], [260 + i, 90]];
        await desk.draw('Add exclude zone', points, way);
        await desk.find('group', `Exclude zone ${i + 1}`);
        drawn.push(points);
    }
    return drawn;
}

describe('drawn by each way and stored', () => {
    for (const { name, id, least, head, zone, pairs, excludes } of BEHAVIORS)
        test(name, async () => {
            const profile = await newProfile(`For ${name}`);
            await desk.behavior(name);
            await desk.set('Active', true);
            await setFields(head);
            const zones = [];
            for (const [i, way] of zone ? WAYS.entries() : []) {
                await desk.draw('Add zone', outline(i), way);
                await desk.find('group', 'Zone Zone 1');
                await desk.set('Name', `Zone by ${way}`);
                await setFields(zone);
                zones.push({ name: `Zone by ${way}`, ...texts(zone), points: outline(i) });
            }
            for (const [i, way] of least === 2 ? WAYS.entries() : []) {
                const points = [[10 + i, 220], [300, 225 + i]];
                await desk.draw('Add line', points, way, { line: true });
                await desk.set('Name', `Line by ${way}`);
                zones.push({ name: `Line by ${way}`, points });
            }
            assert.equal(Boolean(await desk.maybe('button', 'Add line')), least === 2);
            assert.equal(Boolean(await desk.maybe('button', 'Add exclude zone')), Boolean(excludes));
            const drawnExcludes = excludes ? await drawExcludes() : [];
            const drawnPairs = await drawPairs(pairs);
            await desk.save();
            assert.equal(await desk.status(), 'Saved');
            const stored = await taken(desk.page, await service.behavior(profile, id));
            assert.deepEqual(some(stored.values, texts(head)), texts(head));
            assert.equal(stored.values.active, '1');
            assert.equal(stored.zones.length, zones.length);
            zones.forEach((expected, i) => assert.deepEqual(some(stored.zones[i], expected), expected));
            assert.deepEqual(stored.excludes, drawnExcludes);
            assert.deepEqual(some(stored.pairs, drawnPairs), drawnPairs);
            desk.sound();
        });

    test('the scene', async () => {
        const profile = await newProfile('For the scene');
        await desk.behavior('Scene');
        await setFields(SCENE.head);
        const excludes = await drawExcludes();
        const pairs = await drawPairs(SCENE.pairs);
        await desk.save();
        assert.equal(await desk.status(), 'Saved');
        const stored = await taken(desk.page, await service.scene(profile));
        assert.deepEqual(some(stored.values, texts(SCENE.head)), texts(SCENE.head));
        assert.deepEqual(stored.excludes, excludes);
        assert.deepEqual(some(stored.pairs, pairs), pairs);
        assert.match(await service.call('GetProfileList'), /For the scene/);
        desk.sound();
    });
});

test('what is opened and saved without a change is stored byte for byte as before', async () => {
    const profile = await newProfile('Untouched');
    const stored = {};
    for (const { name, id, zone } of BEHAVIORS) {
        await desk.behavior(name);
        if (zone) await desk.draw('Add zone', outline(1), 'mouse');
        else await desk.set('Alarm delay', 8);
        await desk.set('Active', true);
        await desk.save();
        stored[id] = await service.behavior(profile, id);
        assert.ok(stored[id].includes('</behavior>'));
    }
    await desk.behavior('Scene');
    await desk.set('Unit', 'ft');
    await desk.save();
    const scene = await service.scene(profile);
    await desk.page.reload();
    await desk.choose('Untouched');
    for (const { name, id } of BEHAVIORS) {
        await desk.behavior(name);
        await desk.set('Active', false);
        await desk.set('Active', true);
        await desk.keys('Control+s');
        await desk.says(/^Saved$/);
        assert.equal(await service.behavior(profile, id), stored[id]);
    }
    await desk.behavior('Scene');
    await desk.save();
    assert.equal(await service.scene(profile), scene);
});

describe('edited', () => {
    let profile;
    before(async () => {
        profile = await newProfile('Edited');
        await desk.behavior('Loitering Detection');
        await desk.draw('Add zone', [[40, 40], [140, 40], [140, 140], [40, 140]], 'mouse');
    });

    const is = async (points, what) => until(async () => JSON.stringify(await desk.points()) === JSON.stringify(points), `${what}: ${JSON.stringify(points)}`, 5)
        .catch(async error => assert.deepEqual(await desk.points(), points, error.message));
    const square = [[40, 40], [140, 40], [140, 140], [40, 140]];

    test('a point by mouse, finger and keys, each one step of undo', async () => {
        await desk.drag([40, 40], [60, 70]);
        await is([[60, 70], ...square.slice(1)], 'by mouse');
        await desk.drag([140, 140], [200, 200], 'touch');
        await is([[60, 70], square[1], [200, 200], square[3]], 'by finger');
        await desk.focus('button', 'Zone 1, point 2');
        await desk.keys('ArrowRight');
        await desk.keys('Shift+ArrowDown');
        await is([[60, 70], [141, 50], [200, 200], square[3]], 'by keys');
        for (const key of ['Control+z', 'Control+z', 'Control+z', 'Control+z']) await desk.keys(key);
        await is(square, 'undone');
        for (const key of ['Control+Shift+z', 'Control+y', 'Control+y']) await desk.keys(key);
        await is([[60, 70], [141, 40], [200, 200], square[3]], 'redone');
        for (let i = 0; i < 3; ++i) await desk.press('Undo');
        await is(square, 'undone by the button');
    });

    test('a point that is dragged stays in the frame, both ends of it inside', async () => {
        await desk.drag([140, 140], [400, 300]);
        await is([square[0], square[1], [320, 240], square[3]], 'beyond the lower right');
        await desk.drag([40, 40], [-50, -50]);
        await is([[0, 0], square[1], [320, 240], square[3]], 'beyond the upper left');
        await desk.press('Undo');
        await desk.press('Undo');
        await is(square, 'back');
    });

    test('a zone as a whole, by mouse, finger and keys', async () => {
        await desk.drag([90, 90], [110, 120]);
        await is(square.map(([x, y]) => [x + 20, y + 30]), 'by mouse');
        await desk.drag([110, 120], [90, 90], 'touch');
        await is(square, 'by finger');
        await desk.focus('group', 'Zone Zone 1');
        await desk.arrows(-300, 3);
        await is(square.map(([x, y]) => [x - 40, y + 3]), 'by keys, to the edge');
        while ((await desk.points())[0][0] !== 40 || (await desk.points())[0][1] !== 40) await desk.keys('Control+z');
    });

    test('points are added and deleted, and never more than the behavior allows', async () => {
        await desk.focus('button', 'Zone 1, point 2');
        await desk.press('Add point');
        await is([square[0], square[1], [140, 90], square[2], square[3]], 'added');
        await desk.press('Add point');
        assert.equal(await (await desk.find('button', 'Add point')).evaluate(one => one.disabled), true);
        await desk.focus('button', 'Zone 1, point 4');
        await desk.keys('Delete');
        await desk.press('Delete point');
        assert.equal((await desk.points()).length, 4);
        await desk.press('Add zone');
        for (let i = 0; i < 8; ++i) await desk.click([200 + 12 * i, 60 + 20 * (i % 2)]);
        await desk.click([200, 60]);
        await desk.find('group', 'Zone Zone 2');
        assert.equal((await desk.points()).length, 6);
        await desk.focus('group', 'Zone Zone 2');
        await desk.keys('Delete');
        await desk.gone('group', 'Zone Zone 2');
        await desk.press('Undo');
        await desk.find('group', 'Zone Zone 2');
        await (await desk.find('option', 'Zone Zone 2')).evaluate(one => one.click());
        await desk.press('Delete zone');
        await desk.gone('group', 'Zone Zone 2');
    });

    test('Escape gives a shape up, and the table takes any integer, with a warning beyond the frame', async () => {
        await desk.press('Add zone');
        await desk.click([10, 10]);
        await desk.keys('Escape');
        await desk.gone('button', 'Crosshair');
        assert.equal(await desk.maybe('group', 'Zone Zone 2'), null);
        await desk.focus('button', 'Zone 1, point 1');
        await desk.cell('x', 1, -75);
        await desk.keys('Tab');
        await until(() => desk.page.$$eval('#points .finding', all => all.some(one => one.textContent)), 'a warning');
        await desk.keys('Control+z');
        await until(async () => (await desk.points())[0][0] !== -75, 'the undo');
    });

    test('advice stands beside a field, and a value beyond it is told', async () => {
        await desk.set('Alarm delay', 5);
        await until(() => desk.page.$$eval('#findings li', all => all.some(one => /5/.test(one.textContent))), 'a warning');
        assert.match(await desk.described('spinbutton', 'Alarm delay'), /30 to 1800 seconds/);
        await desk.set('Alarm delay', 99999999999);
        await desk.press('Save');
        await desk.says(/^Not saved: Alarm delay: /);
        await desk.set('Alarm delay', 300);
        assert.equal(await desk.status(), '');
        await desk.press('New profile');
        await desk.press('OK');
        await desk.says(/^The name is empty/, 'alert');
    });

    test('what would be stored is seen, changes stay while another behavior is looked at, and are discarded', async () => {
        await desk.set('Name', 'Gate');
        await desk.save();
        assert.equal(await (await desk.find('button', 'Discard')).evaluate(one => one.disabled), true);
        await desk.set('Dwell time', 99);
        await desk.behavior('Object Removal');
        await desk.behavior('Loitering Detection');
        assert.equal(await desk.value('Dwell time'), '99');
        await desk.press('Review changes');
        await desk.find('dialog', 'Review changes');
        const shown = await desk.page.$eval('#dialog', one => one.textContent);
        assert.match(shown, /Gate: Dwell time.*99/);
        assert.doesNotMatch(shown, /Sensitivity/);
        await desk.press('Close');
        await desk.page.reload();
        await desk.choose('Edited');
        await desk.behavior('Loitering Detection');
        assert.equal(await desk.value('Dwell time'), '99');
        await desk.press('Discard');
        await until(async () => (await desk.value('Dwell time')) !== '99', 'the discarded value');
        assert.doesNotMatch(await service.behavior(profile, BEHAVIORS[4].id), />99</);
    });

    test('a zone is copied to the same behavior, another one and another profile', async () => {
        const other = await service.create('Other');
        const copy = async (fields, pattern) => {
            await desk.press('Copy zone');
            for (const [label, value] of Object.entries(fields)) {
                const select = await desk.find('combobox', label);
                const wanted = await until(() => select.evaluate((one, text) => [...one.options].find(option => option.textContent === text)?.value, value), value);
                await select.select(wanted);
                await until(() => select.evaluate((one, expected) => one.value === expected, wanted), `the choice of ${value}`);
            }
            // The behaviors of another profile come from the camera.
            await until(() => desk.page.$eval('#choice-behavior', (one, count) => one.options.length > count, BEHAVIORS.length), 'the behaviors');
            await desk.page.$eval('#status', one => { one.textContent = ''; });
            await desk.press('OK');
            await desk.says(pattern);
        };
        await until(async () => desk.maybe('option', 'Other'), 'the new profile', 20);
        await copy({}, /copied\. Save to store it/);
        await until(async () => (await desk.page.$$('[data-key^="rois/"]')).length === 2, 'the copy');
        await desk.press('Undo');
        await copy({ Behavior: 'Directional Motion' }, /copied and stored there/);
        const here = await taken(desk.page, await service.behavior(profile, BEHAVIORS[3].id));
        assert.deepEqual([here.zones[0].name, here.zones[0].points], ['Gate', await desk.points()]);
        await copy({ Profile: 'Other', Behavior: 'Loitering Detection' }, /copied and stored there/);
        const there = await taken(desk.page, await service.behavior(other, BEHAVIORS[4].id));
        assert.deepEqual([there.zones[0].name, there.zones[0].points], ['Gate', await desk.points()]);
        desk.sound();
    });
});
