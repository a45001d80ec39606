// The console's page as a person meets it: by role and accessible name, by mouse, finger, key and table.

import assert from 'node:assert/strict';
import { until } from './room.js';

const quoted = text => text.replace(/(["\\])/g, '\\$1');

export class Desk {
    // Opens the page and waits until it shows a camera.
    static async open(browser, url, size = { width: 1280, height: 900 }) {
        const page = await browser.newPage();
        const desk = new Desk(page);
        desk.errors = [];
        page.on('pageerror', error => desk.errors.push(error.message));
        page.on('console', message => {
            if (message.type() === 'error' && !/status of (409|422|502)|ERR_CONNECTION_REFUSED/.test(message.text())) desk.errors.push(message.text());
        });
        desk.asked = [];
        page.on('request', request => desk.asked.push(request.url()));
        await page.setViewport(size);
        await page.goto(url);
        await desk.find('group', 'Picture');
        await until(async () => (await page.title()).includes(' - '), 'the name of the camera');
        return desk;
    }

    constructor(page) {
        this.page = page;
    }

    async maybe(role, name) {
        for (const one of await this.page.$$(`::-p-aria([name="${quoted(name)}"][role="${role}"])`))
            if (await one.evaluate(found => found.checkVisibility())) return one;
        return null;
    }

    find(role, name) {
        return until(() => this.maybe(role, name), `${role} "${name}"`);
    }

    async gone(role, name) {
        await until(async () => !(await this.maybe(role, name)), `the end of ${role} "${name}"`);
    }

    // By script where the pointer isn't what is tested: nothing scrolls away below it.
    async press(name) {
        const button = await until(async () => {
            const found = await this.maybe('button', name);
            return found && !(await found.evaluate(one => one.disabled)) ? found : null;
        }, `enabled button "${name}"`);
        await button.evaluate(one => one.click());
    }

    async choose(name) {
        const option = await this.find('option', name);
        await option.evaluate(one => one.click());
        await this.chosen(name);
    }

    async chosen(name) {
        await until(async () => (await this.maybe('option', name)).evaluate(one => one.getAttribute('aria-selected') === 'true'), `the choice of ${name}`);
    }

    // Makes a profile and waits until it is chosen: the page may show it before.
    async newProfile(name) {
        await this.press('New profile');
        await this.set('Profile name', name);
        await this.press('OK');
        await this.chosen(name);
    }

    async described(role, name) {
        const handle = await this.find(role, name);
        const { nodes } = await this.ax(handle);
        return nodes[0].description?.value ?? '';
    }

    async ax(handle) {
        const client = handle.frame.client ?? handle.client;
        return client.send('Accessibility.getPartialAXTree', { objectId: handle.remoteObject().objectId, fetchRelatives: false });
    }

    // Opens a behavior and waits until its document is there.
    async behavior(name) {
        await this.choose(name);
        await until(() => this.page.evaluate(expected => document.getElementById('behavior-title').textContent === expected &&
            !document.getElementById('save').disabled, name), `the document of ${name}`);
    }

    status() {
        return this.page.$eval('[role=status]', one => one.textContent);
    }

    alert() {
        return this.page.$eval('[role=alert]', one => one.textContent);
    }

    async says(pattern, what = 'status') {
        return until(async () => pattern.exec(await this[what]()), `${what} ${pattern}`).catch(async error => {
            throw new Error(`${error.message} It says "${await this[what]()}". ${this.errors}`);
        });
    }

    async save() {
        await this.press('Save');
        await this.says(/^Saved/);
    }

    // ---- fields -----------------------------------------------------------------------------------

    async set(label, value) {
        const handle = await until(() => this.labelled(label), `field "${label}"`);
        const kind = await handle.evaluate(one => (one.localName === 'select' ? 'select' : one.type));
        if (kind === 'select') await handle.select(String(value));
        else if (kind === 'checkbox') {
            if ((await handle.evaluate(one => one.checked)) !== Boolean(value)) await handle.evaluate(one => one.click());
        } else {
            await handle.focus();
            await this.page.keyboard.down('Control');
            await this.page.keyboard.press('a');
            await this.page.keyboard.up('Control');
            await this.page.keyboard.type(String(value));
            await this.page.keyboard.press('Tab');
        }
    }

    async labelled(label) {
        for (const role of ['spinbutton', 'textbox', 'checkbox', 'combobox']) {
            const found = await this.maybe(role, label);
            if (found) return found;
        }
        return null;
    }

    async value(label) {
        const handle = await until(() => this.labelled(label), `field "${label}"`);
        return handle.evaluate(one => (one.type === 'checkbox' ? one.checked : one.value));
    }

    // ---- the picture --------------------------------------------------------------------------------

    // Where a point of the frame is on the screen.
    async at([x, y]) {
        const picture = await this.find('group', 'Picture');
        await picture.evaluate(one => one.scrollIntoView({ block: 'center' }));
        return picture.evaluate((one, px, py) => {
            const box = one.getBoundingClientRect();
            const [, , width, height] = one.getAttribute('viewBox').split(' ').map(Number);
            return { x: box.left + px * box.width / width, y: box.top + py * box.height / height };
        }, x, y);
    }

    async click(point) {
        const { x, y } = await this.at(point);
        await this.page.mouse.click(x, y);
    }

    async tap(point) {
        const { x, y } = await this.at(point);
        await this.page.touchscreen.tap(x, y);
    }

    async drag(from, to, by = 'mouse') {
        const start = await this.at(from);
        const end = await this.at(to);
        const middle = { x: (start.x + end.x) / 2, y: (start.y + end.y) / 2 };
        if (by === 'touch') {
            const touch = await this.page.touchscreen.touchStart(start.x, start.y);
            await touch.move(middle.x, middle.y);
            await touch.move(end.x, end.y);
            await touch.end();
            return;
        }
        await this.page.mouse.move(start.x, start.y);
        await this.page.mouse.down();
        await this.page.mouse.move(middle.x, middle.y);
        await this.page.mouse.move(end.x, end.y);
        await this.page.mouse.up();
    }

    // Moves what has the focus by whole steps, with as few keys as there are.
    async arrows(dx, dy) {
        for (const [delta, low, high] of [[dx, 'ArrowLeft', 'ArrowRight'], [dy, 'ArrowUp', 'ArrowDown']]) {
            const key = delta < 0 ? low : high;
            const left = Math.abs(delta);
            if (left >= 10) await this.page.keyboard.down('Shift');
            for (let i = 0; i < Math.floor(left / 10); ++i) await this.page.keyboard.press(key);
            if (left >= 10) await this.page.keyboard.up('Shift');
            for (let i = 0; i < left % 10; ++i) await this.page.keyboard.press(key);
        }
    }

    async focus(role, name) {
        await (await this.find(role, name)).evaluate(one => one.focus());
    }

    async keys(combination) {
        const keys = combination.split('+');
        for (const key of keys.slice(0, -1)) await this.page.keyboard.down(key);
        await this.page.keyboard.press(keys.at(-1));
        for (const key of keys.slice(0, -1).reverse()) await this.page.keyboard.up(key);
    }

    async cell(axis, n, value) {
        const field = await this.find('spinbutton', `${axis} of point ${n}`);
        await field.focus();
        await this.keys('Control+a');
        await this.page.keyboard.type(String(value));
    }

    // Draws a shape; `button` begins it.
    async draw(button, points, by, { line = false } = {}) {
        await this.press(button);
        await this.find('button', 'Crosshair');
        if (by === 'mouse' || by === 'touch') {
            for (const point of points) await (by === 'mouse' ? this.click(point) : this.tap(point));
            if (!line) await (by === 'mouse' ? this.click(points[0]) : this.tap(points[0]));
        } else if (by === 'table') {
            for (const [i, [x, y]] of points.entries()) {
                await this.cell('x', i + 1, x);
                await this.cell('y', i + 1, y);
            }
            await this.page.keyboard.press('Enter');
        } else {
            await this.focus('button', 'Crosshair');
            let at = await this.page.$eval('#picture', one => {
                const [, , width, height] = one.getAttribute('viewBox').split(' ').map(Number);
                return [Math.round(width / 2), Math.round(height / 2)];
            });
            for (const point of line ? points : [...points, points[0]]) {
                await this.arrows(point[0] - at[0], point[1] - at[1]);
                await this.page.keyboard.press('Enter');
                at = point;
            }
        }
        await this.gone('button', 'Crosshair');
    }

    // The points of a shape as its table shows them.
    async points() {
        return this.page.$$eval('#points tr', rows => rows.map(row => [...row.querySelectorAll('input')].map(one => Number(one.value))));
    }

    // Nothing that the page did went wrong behind its back, and it asked nobody but the console.
    sound() {
        assert.deepEqual(this.errors, []);
        const origin = new URL(this.page.url()).origin;
        assert.deepEqual(this.asked.filter(url => !url.startsWith(origin) && !url.startsWith(`blob:${origin}`)), []);
    }
}
