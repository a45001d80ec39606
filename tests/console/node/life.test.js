// Profiles and switches, cameras of other frames, and what happens when things go wrong.

import assert from 'node:assert/strict';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, describe, test } from 'node:test';
import { BEHAVIORS, taken } from './documents.js';
import { Desk } from './desk.js';
import { PICTURE, SHOTS, Service, startBrowser, startConsole, until } from './room.js';

const LOITERING = BEHAVIORS[4];
const SQUARE = [[40, 40], [140, 40], [140, 140], [40, 140]];
let service, second, browser;

before(async () => {
    service = await new Service().start();
    second = await new Service().start();
    browser = await startBrowser();
});
after(async () => {
    await browser?.close();
    await service?.clean();
    await second?.clean();
});

async function desk(args, action) {
    const console_ = await startConsole(args);
    const opened = await Desk.open(browser, console_.url);
    try {
        await action(opened, console_);
        opened.sound();
    } finally {
        await opened.page.close();
        await console_.stop();
    }
}

test('profiles are created, renamed, run, stopped and deleted; behaviors tell whether they can be selected', () => desk(['--url', service.url], async at => {
    assert.equal(await at.page.title(), `127.0.0.1:${service.port} - Varlo analytics`);
    for (const name of ['Day', 'Night']) await at.newProfile(name);
    await at.press('New profile');
    await at.press('Cancel');
    await at.press('Rename');
    await at.set('Profile name', 'Late night');
    await at.press('OK');
    await at.find('option', 'Late night');
    assert.match(await service.call('GetProfileList'), />Late night</);
    await at.press('Run');
    await until(async () => (await at.described('option', 'Late night')) === 'running', 'running');
    assert.equal(await at.described('option', 'Day'), '');
    await at.press('Stop');
    await until(async () => (await at.described('option', 'Late night')) === '', 'stopped');
    const names = await at.page.$$eval('#behaviors [role=option]', all => all.map(one => one.getAttribute('aria-label')));
    const delivered = [...BEHAVIORS.map(({ name }) => name), 'Scene'];
    assert.deepEqual(names.filter(name => delivered.includes(name)), delivered);
    assert.equal(await at.described('option', 'Loitering Detection'), 'available');
    for (const name of ['Loitering Detection', 'Camera Sabotage']) {
        await at.behavior(name);
        await at.set('Active', true);
        await at.save();
        await until(async () => (await at.described('option', name)) === 'active', 'active');
    }
    assert.equal(await at.described('option', 'Object Removal'), 'unavailable: number');
    assert.equal(await at.described('option', 'Adaptive Motion'), 'unavailable: camera');
    await at.choose('Day');
    await at.behavior('Loitering Detection');
    await at.set('Active', true);
    await at.save();
    await until(async () => (await at.described('option', 'Object Removal')) === 'available', 'available');
    await (await at.find('checkbox', 'Motion detection')).evaluate(one => one.click());
    await until(async () => (await at.described('option', 'Object Removal')) === 'unavailable: number', 'the switch');
    await until(() => at.value('Motion detection'), 'the switch as it is');
    await (await at.find('checkbox', 'Motion detection')).evaluate(one => one.click());
    await until(async () => (await at.described('option', 'Object Removal')) === 'available', 'the switch back');
    await (await at.find('checkbox', 'Analytics')).evaluate(one => one.click());
    await until(() => at.page.$eval('#analytics', one => !one.indeterminate && !one.checked), 'the analytics off');
    await at.press('Delete');
    await at.press('Cancel');
    await at.press('Delete');
    await at.press('OK');
    await at.gone('option', 'Day');
    assert.doesNotMatch(await service.call('GetProfileList'), />Day</);
}));

test('a budget that is used up is told', async () => {
    await service.create('Full');
    await desk(['--url', service.url], async at => {
        await at.choose('Full');
        await at.behavior('Directional Motion');
        await at.set('Active', true);
        await at.save();
        await until(async () => (await at.described('option', 'Stopped Vehicle')) === 'unavailable: budget', 'the budget');
        assert.equal(await at.described('option', 'Camera Sabotage'), 'available');
        await at.behavior('Stopped Vehicle');
        assert.match(await at.page.$eval('#reason', one => one.textContent), /cost more than the camera has/);
    });
});

test('cameras of a hosts file, and a zone that is copied to another frame', async () => {
    const profile = await service.create('Here');
    await second.create('There');
    const hosts = join(service.folder, 'hosts');
    writeFileSync(hosts, `${service.url}\n${second.url} frame=640x360\nhttp://127.0.0.1:1/\n`);
    await desk(['--hosts', hosts, '--picture', PICTURE], async at => {
        await at.choose('Here');
        await at.behavior('Loitering Detection');
        await at.draw('Add zone', SQUARE, 'mouse');
        await at.press('Copy zone');
        const dialog = await at.page.$('#dialog');
        for (const [id, text] of [['camera', `127.0.0.1:${second.port}`], ['profile', 'There'], ['behavior', 'Loitering Detection']]) {
            const select = await dialog.$(`#choice-${id}`);
            const value = await until(() => select.evaluate((one, wanted) => [...one.options].find(option => option.textContent === wanted)?.value, text), text);
            await select.select(value);
        }
        await until(() => dialog.$eval('#choice-behavior', (one, count) => one.options.length > count, BEHAVIORS.length), 'the behaviors');
        await at.press('OK');
        await at.says(/copied/);
        const stored = await taken(at.page, await second.behavior(1, LOITERING.id));
        assert.deepEqual(stored.zones[0].points, SQUARE.map(([x, y]) => [x * 2, y * 1.5]));
        // What is drawn here isn't stored: the profile holds no behavior yet.
        await assert.rejects(service.behavior(profile, LOITERING.id), /Unsupported behavior Id/);
        const camera = await at.find('combobox', 'Camera');
        await camera.select('1');
        await until(async () => (await at.page.title()) === `127.0.0.1:${second.port} - Varlo analytics`, 'the title');
        await at.choose('There');
        await at.behavior('Loitering Detection');
        await at.drag([80, 60], [640, 360]);
        await until(async () => String((await at.points())[0]) === '640,360', 'the corner of its frame');
        assert.match(await at.page.$eval('#picture-note', one => one.textContent), /1280 × 960.*640 × 360/);
        await camera.select('0');
        await at.choose('Here');
        await at.behavior('Loitering Detection');
        assert.deepEqual(await at.points(), SQUARE);
        // Of a camera that is lost nothing can be chosen, least of all a profile of another one.
        await at.press('Copy zone');
        await (await dialog.$('#choice-camera')).select('2');
        assert.equal(await dialog.$eval('#choice-profile', one => one.options.length), 0);
        await at.press('OK');
        await at.says(/Nothing is copied/, 'alert');
    });
});

describe('when things go wrong', () => {
    let profile;
    before(async () => {
        profile = await service.create('Trouble');
    });
    const open = at => at.choose('Trouble').then(() => at.behavior('Loitering Detection'));

    test('a lost camera is said, and nothing drawn is lost', () => desk(['--url', service.url], async at => {
        await open(at);
        await at.draw('Add zone', SQUARE, 'mouse');
        await service.stop();
        await at.says(/127\.0\.0\.1/, 'alert');
        await at.press('Save');
        await at.says(/^Not saved: /);
        assert.deepEqual(await at.points(), SQUARE);
        await at.drag(SQUARE[0], [20, 20]);
        await service.start();
        await until(async () => (await at.alert()) === '', 'the end of the alert');
        await at.save();
        const stored = await taken(at.page, await service.behavior(profile, LOITERING.id));
        assert.deepEqual(stored.zones[0].points, [[20, 20], ...SQUARE.slice(1)]);
    }));

    const rename = async name => {
        const xml = await service.behavior(profile, LOITERING.id);
        await service.call('SetProfileBehavior', { profileId: profile, behaviorId: LOITERING.id, config: xml.replace(/<name>[^<]*<\/name>/, `<name>${name}</name>`) });
    };
    const meanwhile = async (at, name) => {
        await rename(name);
        await at.set('Dwell time', 77);
        await at.press('Save');
        await at.find('dialog', 'Changed meanwhile');
        assert.ok((await at.page.$eval('#dialog', one => one.textContent)).includes(name));
        assert.match(await at.status(), /^Not saved: /);
        assert.ok((await service.behavior(profile, LOITERING.id)).includes(`<name>${name}</name>`));
    };

    test('a change by somebody else is seen before it is overwritten', () => desk(['--url', service.url], async at => {
        await open(at);
        await meanwhile(at, 'Theirs');
        await at.press('Reload');
        await until(async () => (await at.value('Name')) === 'Theirs', 'the reloaded name');
        await at.press('Undo');
        await until(async () => (await at.value('Dwell time')) === '77', 'what was drawn');
        await at.press('Discard');
        await at.says(/discarded/);
        await meanwhile(at, 'Theirs again');
        await rename('Theirs, later');
        await at.press('Overwrite');
        await until(() => at.page.$eval('#dialog', one => one.open && one.textContent.includes('Theirs, later')), 'the further change');
        assert.ok((await service.behavior(profile, LOITERING.id)).includes('<name>Theirs, later</name>'));
        await at.page.screenshot({ path: join(SHOTS, 'changed-meanwhile.png') });
        await at.press('Overwrite');
        await at.says(/^Saved/);
        const text = await service.behavior(profile, LOITERING.id);
        assert.ok(text.includes('>77<') && !text.includes('Theirs again'));
    }));

    // The answer to the next request that matches waits until letGo().
    const holdAnswer = (at, pattern) => at.page.evaluate(source => {
        const real = window.fetch;
        const gate = new Promise(resolve => { window.letGo = resolve; });
        window.held = false;
        window.fetch = async (path, ...more) => {
            const answer = await real(path, ...more);
            if (window.held || !new RegExp(source).test(path)) return answer;
            window.held = true;
            const body = await answer.json();
            answer.json = async () => body;
            await gate;
            return answer;
        };
    }, pattern.source);
    const isHeld = at => until(() => at.page.evaluate(() => window.held), 'the answer');

    test('a save and a discard concern what was open when they were asked for', () => desk(['--url', service.url], async at => {
        await open(at);
        await rename('Somebody else’s');
        await at.set('Dwell time', 66);
        await holdAnswer(at, /api\/save/);
        await at.press('Save');
        await at.behavior('Object Removal');
        await at.draw('Add zone', SQUARE, 'mouse');
        await at.page.evaluate(() => window.letGo());
        await at.find('dialog', 'Changed meanwhile');
        await at.press('Overwrite');
        await at.says(/^Saved/);
        assert.match(await service.behavior(profile, LOITERING.id), />66</);
        assert.doesNotMatch(await service.behavior(profile, BEHAVIORS[6].id), /<roi>/);
        assert.deepEqual(await at.points(), SQUARE);
        await at.behavior('Loitering Detection');
        await at.set('Dwell time', 67);
        await holdAnswer(at, /api\/document.*Loitering/);
        await at.press('Discard');
        await at.behavior('Object Removal');
        await at.page.evaluate(() => window.letGo());
        await at.says(/discarded/);
        assert.deepEqual(await at.points(), SQUARE);
        await at.behavior('Loitering Detection');
        assert.equal(await at.value('Dwell time'), '66');
    }));

    test('a look at the camera that ends behind a later one doesn’t bring the past back', () => desk(['--url', service.url], async at => {
        await open(at);
        await holdAnswer(at, /api\/camera/);
        await isHeld(at);
        await at.newProfile('Newest');
        await at.behavior('Loitering Detection');
        await at.page.evaluate(() => window.letGo());
        assert.ok(await at.maybe('option', 'Newest'));
        assert.equal(await at.status(), '');
    }));

    test('a profile that is made before the camera has answered stays chosen', async () => {
        const hosts = join(service.folder, 'two');
        writeFileSync(hosts, `${second.url}\n${service.url}\n`);
        await desk(['--hosts', hosts], async at => {
            await holdAnswer(at, /api\/camera.camera=1/);
            await (await at.find('combobox', 'Camera')).select('1');
            await isHeld(at);
            await at.newProfile('Early');
            await at.page.evaluate(() => window.letGo());
            await at.behavior('Loitering Detection');
            await at.chosen('Early');
        });
    });

    test('a document that is asked for twice doesn’t undo what was saved between the answers', () => desk(['--url', service.url], async at => {
        await open(at);
        await at.behavior('Object Removal');
        await holdAnswer(at, /api\/document.*Loitering/);
        await at.choose('Loitering Detection');
        await isHeld(at);
        await at.behavior('Loitering Detection');
        await at.set('Dwell time', 88);
        await at.save();
        await at.page.evaluate(() => window.letGo());
        assert.equal(await at.value('Dwell time'), '88');
        await at.set('Dwell time', 89);
        await at.save();
        assert.match(await service.behavior(profile, LOITERING.id), />89</);
    }));

    test('what was stored is saved, also if what can be selected isn’t told afterwards', () => desk(['--url', service.url], async at => {
        await open(at);
        await at.page.evaluate(() => {
            const real = window.fetch;
            window.fetch = (path, ...more) => (path.startsWith('api/behaviors')
                ? Response.json({ error: 'Nobody knows what can be selected.' }, { status: 422 }) : real(path, ...more));
        });
        await at.set('Dwell time', 55);
        await at.press('Save');
        await at.says(/Nobody knows/, 'alert');
        assert.equal(await at.status(), 'Saved');
        assert.match(await service.behavior(profile, LOITERING.id), />55</);
    }));

    test('markup, right-to-left text and 255 bytes in names', () => desk(['--url', service.url], async at => {
        const markup = '<img src=x onerror="document.title=1">&amp;\'';
        const names = [markup, 'موقف السيارات', '𝓩'.repeat(63) + 'abc'];
        await open(at);
        for (const name of names) {
            await at.newProfile(name);
            await at.behavior('Loitering Detection');
            await at.draw('Add zone', SQUARE, 'mouse');
            await at.set('Name', name);
            await at.find('group', `Zone ${name}`);
            await at.find('button', `${name}, point 4`);
            await at.save();
            assert.equal(await at.status(), 'Saved');
            assert.equal(await at.page.$$eval('img', all => all.length), 0);
        }
        assert.match(await at.page.title(), /Varlo analytics$/);
        assert.ok(await at.page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
        await at.press('New profile');
        await at.set('Profile name', '𝓩'.repeat(64));
        await at.press('OK');
        await at.says(/./, 'alert');
        for (const name of names) assert.ok(await at.maybe('option', name));
    }));

    test('a picture that can’t be had any more is said, and the page works on', async () => {
        const file = join(service.folder, 'picture.png');
        writeFileSync(file, await import('node:fs').then(({ readFileSync }) => readFileSync(PICTURE)));
        await desk(['--url', service.url, '--picture', file], async at => {
            await open(at);
            assert.equal(await at.alert(), '');
            writeFileSync(file, 'text');
            await at.press('New picture');
            await at.says(/neither a JPEG nor a PNG/, 'alert');
            await at.behavior('Object Removal');
            await at.draw('Add zone', SQUARE, 'mouse');
            await at.save();
        });
    });

    test('a profile that somebody else deletes is said', () => desk(['--url', service.url], async at => {
        const gone = await service.create('Soon gone');
        await at.choose('Soon gone');
        await at.behavior('Loitering Detection');
        await at.draw('Add zone', SQUARE, 'mouse');
        await service.call('DeleteProfile', { profileId: gone });
        await at.gone('option', 'Soon gone');
        await at.says(/Soon gone/);
    }));
});
