// A short tour in the other browser: zones by mouse, keys and table, edited, undone, saved and compared through SOAP.

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { BEHAVIORS, taken } from './documents.js';
import { Desk } from './desk.js';
import { PICTURE, Service, startBrowser, startConsole, until } from './room.js';

// Its remote control takes no touches.
const WAYS = ['mouse', 'keys', 'table'];
const { name, id } = BEHAVIORS[3];
const outline = i => [[40 + 30 * i, 40], [150 + 30 * i, 60 + i], [140 + 20 * i, 190]];
let service, console_, browser, desk, profile;

before(async () => {
    service = await new Service().start();
    profile = await service.create('Car park');
    console_ = await startConsole(['--url', service.url, '--picture', PICTURE]);
    browser = await startBrowser('firefox');
    desk = await Desk.open(browser, console_.url, { width: 1280, height: 1000 });
});
after(async () => {
    await browser?.close();
    await console_?.stop();
    await service?.clean();
});

test('zones and a line by each way, a point moved and moved back, all stored', async () => {
    await desk.choose('Car park');
    await desk.behavior(name);
    await desk.set('Active', true);
    for (const [i, way] of WAYS.entries()) {
        await desk.draw('Add zone', outline(i), way);
        await desk.find('group', 'Zone Zone 1');
        await desk.set('Name', `Zone by ${way}`);
        await desk.set('Direction', 7 - i);
    }
    await desk.draw('Add line', [[10, 220], [300, 225]], 'mouse', { line: true });
    await desk.set('Name', 'Line');
    await desk.drag([10, 220], [20, 200]);
    await until(async () => String((await desk.points())[0]) === '20,200', 'the point by mouse');
    await desk.focus('button', 'Line, point 1');
    await desk.arrows(10, 10);
    await until(async () => String((await desk.points())[0]) === '30,210', 'the point by keys');
    await desk.keys('Control+z');
    await desk.keys('Control+z');
    await until(async () => String((await desk.points())[0]) === '20,200', 'the undo');
    await desk.save();
    const stored = await taken(desk.page, await service.behavior(profile, id));
    assert.deepEqual(stored.zones.map(zone => [zone.name, zone.direction, zone.points]), [
        ...WAYS.map((way, i) => [`Zone by ${way}`, String(7 - i), outline(i)]), ['Line', '0', [[20, 200], [300, 225]]]]);
    desk.sound();
});
