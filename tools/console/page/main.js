// The page begins here: profiles, switches, the picture, and what each button and key does.

import * as api from './api.js';
import * as dialogs from './dialogs.js';
import * as model from './model.js';
import { POLL, chooseCamera, chooseProfile, poll, refresh, refreshBehaviors } from './choosing.js';
import { addPoint, begin, finish, giveUp, picture, removePoint, removeShape, undraw } from './drawing.js';
import { element } from './fields.js';
import { render } from './render.js';
import { copy, discard, review, save } from './saving.js';
import { $, alarm, attempt, change, draft, profileNow, state } from './state.js';

async function profileAction(action, more = {}) {
    const answer = await api.send('profile', { camera: state.camera, profile: state.profile, action, ...more });
    await refresh();
    if (answer.profile !== undefined && answer.profile !== state.profile) await chooseProfile(answer.profile);
    else await refreshBehaviors();
}

async function newProfile() {
    const name = await dialogs.askName('New profile', '');
    if (name !== null) await profileAction('create', { name });
}

async function renameProfile() {
    const name = await dialogs.askName('Rename', profileNow().name);
    if (name !== null) await profileAction('rename', { name });
}

async function deleteProfile() {
    const { name } = profileNow();
    const sure = await dialogs.confirm('Delete', `Delete the profile “${name}” with all its behaviors? This can’t be undone.`);
    if (!sure) return;
    await profileAction('delete');
    if (state.profiles.length) await chooseProfile(state.profiles[0].id);
}

async function toggle(what, box) {
    const on = box.checked;
    try {
        await api.send('switch', { camera: state.camera, what, on });
        await refreshBehaviors();
    } finally {
        await refresh();
    }
}

async function newPicture() {
    try {
        const url = URL.createObjectURL(await api.picture());
        const probe = new Image();
        probe.src = url;
        await probe.decode();
        picture.show(url);
        state.picture = [probe.naturalWidth, probe.naturalHeight];
        alarm('picture', '');
    } catch (error) {
        alarm('picture', error instanceof api.Refused ? error.message : 'The picture can’t be shown: it is damaged.');
    }
    render();
}

function step(to) {
    if (state.drawing) return to === model.undo ? undraw() : undefined;
    if (draft()) change(to(draft()));
}

const press = (id, action) => $(id).addEventListener('click', () => attempt(action));
press('new-profile', newProfile);
press('rename', renameProfile);
press('delete', deleteProfile);
press('run', () => profileAction('run'));
press('stop', () => profileAction('stop'));
press('add-zone', () => begin('zone'));
press('add-line', () => begin('line'));
press('add-exclude', () => begin('exclude'));
press('copy-zone', copy);
press('delete-zone', () => removeShape(state.selected));
press('undo', () => step(model.undo));
press('redo', () => step(model.redo));
press('add-point', addPoint);
press('delete-point', () => removePoint(state.selected, state.vertex));
press('finish', finish);
press('give-up', giveUp);
press('save', save);
press('discard', discard);
press('review', review);
press('new-picture', newPicture);
$('analytics').addEventListener('change', event => attempt(() => toggle('analytics', event.target)));
$('motion').addEventListener('change', event => attempt(() => toggle('motion', event.target)));
$('camera').addEventListener('change', event => attempt(() => chooseCamera(Number(event.target.value))));

document.addEventListener('keydown', event => {
    if ($('dialog').open) return;
    const key = event.key.toLowerCase();
    const control = (event.ctrlKey || event.metaKey) && !event.altKey;
    if (event.key === 'Escape') return giveUp();
    if (!control) return;
    const action = { z: event.shiftKey ? () => step(model.redo) : () => step(model.undo), y: () => step(model.redo), s: save }[key];
    if (!action) return;
    event.preventDefault();
    attempt(action);
});

async function start() {
    try {
        state.drafts = JSON.parse(sessionStorage.getItem('drafts') ?? '{}');
    } catch {
        state.drafts = {};
    }
    render();
    const { cameras, choice, picture: hasPicture } = await api.read('console');
    state.cameras = cameras;
    $('camera-choice').hidden = !choice;
    $('camera').replaceChildren(...cameras.map(({ title }, i) => element('option', { value: i }, title)));
    $('new-picture').hidden = !hasPicture;
    if (hasPicture) newPicture();
    await attempt(() => chooseCamera(0));
    setTimeout(poll, POLL);
}

start();
