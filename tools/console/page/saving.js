// Stores, reviews, discards and copies.

import * as api from './api.js';
import * as dialogs from './dialogs.js';
import * as model from './model.js';
import { refreshBehaviors } from './choosing.js';
import { giveUp } from './drawing.js';
import { element } from './fields.js';
import { alarm, attempt, change, context, draft, draftKey, edit, failed, keep, say, seal, shape, state } from './state.js';

const cameBack = changes => changes.map(({ field, before, after }) => `${field} was ${before}, is ${after}`).join('; ');

export async function save() {
    if (state.drawing) return say('Not saved: a shape is being drawn. Finish it, or give it up with Escape.');
    seal();
    return draft() ? store(context(), draft().base) : undefined;
}

// `base` is what the person knows the camera to have.
async function store(asked, base) {
    const history = state.drafts[draftKey(asked)];
    say('Saving …');
    alarm('action', '');
    try {
        saved(asked, history, await api.send('save', { ...asked, base, document: history.doc }));
    } catch (error) {
        if (!(error instanceof api.Refused)) throw error;
        if (error.status === 409 && error.answer.document) return changedMeanwhile(asked, error.answer);
        if (error.answer.lost || error.status === 0) alarm('camera', error.message);
        return say(`Not saved: ${error.message}`);
    }
    return refreshBehaviors();
}

// Of what was asked for, whatever is open by now.
function replace(asked, history) {
    state.drafts[draftKey(asked)] = history;
    if (draft()) change(draft());
    else keep();
}

// What was edited while the answer came stays, and is a change still.
export function saved(asked, sent, { document: doc, changes }) {
    const now = state.drafts[draftKey(asked)];
    say(changes.length ? `Saved, but this came back different: ${cameBack(changes)}` : 'Saved');
    replace(asked, now.doc === sent.doc ? model.settle(now, doc) : { ...now, base: doc });
}

export async function changedMeanwhile(asked, { document: doc, changes }) {
    say('Not saved: somebody else has changed this meanwhile.');
    const pressed = await dialogs.ask('Changed meanwhile', [
        element('p', {}, 'Somebody else has changed this on the camera since it was opened here:'),
        dialogs.differences(changes, ['What', 'Was', 'Is now']),
        element('p', {}, '“Overwrite” stores what is drawn here. “Reload” takes what the camera has; “Undo” brings back what is drawn here.'),
    ], ['Overwrite', 'Reload']);
    if (pressed === 'Overwrite') return store(asked, doc);
    if (pressed !== 'Reload') return undefined;
    replace(asked, model.settle(state.drafts[draftKey(asked)], doc));
    return say('Reloaded.');
}

export async function discard() {
    if (state.drawing) return giveUp();
    seal();
    if (!draft()) return undefined;
    const asked = context();
    let { base } = draft();
    try {
        base = (await api.read('document', asked)).document;
    } catch (error) {
        failed(error);
    }
    replace(asked, model.settle(state.drafts[draftKey(asked)], base));
    return say('The changes are discarded. “Undo” brings them back.');
}

export async function review() {
    seal();
    const { base, doc } = draft();
    const { changes, findings } = await api.send('review', { ...context(), base, document: doc });
    const list = findings.map(({ level, text }) => element('li', { class: level, dir: 'auto' }, text));
    await dialogs.ask('Review changes', [
        changes.length ? element('p', {}, 'This would be stored:') : element('p', {}, 'Nothing is changed. Saving stores nothing.'),
        ...(changes.length ? [dialogs.differences(changes, ['What', 'Is', 'Becomes'])] : []),
        ...(list.length ? [element('ul', { class: 'findings', 'aria-label': 'Warnings' }, ...list)] : []),
    ], ['Close']);
}

export async function copy() {
    const copied = shape();
    const zone = copied.kind === 'zone' ? model.get(draft().doc, copied.key) : null;
    const to = context();
    let profile, behavior;
    const fillBehaviors = async () => {
        const { behaviors } = await api.read('behaviors', { camera: to.camera, profile: to.profile });
        behavior.offer(behaviors.map(({ id, name }) => [id, name]), behaviors.some(({ id }) => id === to.behavior) ? to.behavior : undefined);
        to.behavior = behavior.select.value;
    };
    // Until the camera has answered, there is nothing of it to choose.
    const fillProfiles = async index => {
        Object.assign(to, { camera: index, profile: null });
        profile.offer([]);
        behavior.offer([]);
        const { profiles } = await api.read('camera', { camera: index });
        if (index !== to.camera || !profiles.length) return;
        profile.offer(profiles.map(({ id, name }) => [id, name]));
        to.profile = profiles[0].id;
        await fillBehaviors();
    };
    const camera = dialogs.choice('Camera', state.cameras.map(({ title }, i) => [i, title]), to.camera, value => attempt(() => fillProfiles(Number(value))));
    profile = dialogs.choice('Profile', state.profiles.map(({ id, name }) => [id, name]), to.profile, value => {
        to.profile = Number(value);
        attempt(fillBehaviors);
    });
    behavior = dialogs.choice('Behavior', state.behaviors.map(({ id, name }) => [id, name]), to.behavior, value => { to.behavior = value; });
    if ((await dialogs.ask(`Copy ${copied.title}`, [camera.row, profile.row, behavior.row], ['OK', 'Cancel'])) !== 'OK') return;
    if (to.profile === null) alarm('action', 'Nothing is copied: that camera has no profile, or doesn’t answer.');
    else await paste(copied, zone, to);
}

// Where the page has changes, the copy joins them; elsewhere it is stored at once.
export async function paste(copied, zone, to) {
    const open = state.drafts[draftKey(to)];
    const { document: doc, zone: template } = await api.read('document', to);
    const history = open && (model.isChanged(open) || model.equal(to, context())) ? open : model.open(doc);
    if (!model.takes(history.doc, copied)) return alarm('action', `${copied.title} has no place there: that behavior has no such shape.`);
    const { points: scaled } = await api.send('scale', { from: state.camera, to: to.camera, points: copied.points });
    const target = model.paste(history.doc, { ...copied, points: scaled }, zone, template);
    if (model.equal(to, context())) {
        state.selected = copied.kind === 'zone' ? `rois/${target.rois.length - 1}` : copied.kind === 'exclude' ? `excludeZones/${target.excludeZones.length - 1}` : copied.key;
        edit(target);
        return say(`${copied.title} is copied. Save to store it.`);
    }
    if (history === open) {
        state.drafts[draftKey(to)] = model.edit(open, target);
        keep();
        return say(`${copied.title} is copied to the changes there that aren’t saved yet.`);
    }
    const { document: kept } = await api.send('save', { ...to, base: doc, document: target });
    if (open) state.drafts[draftKey(to)] = model.settle(open, kept);
    return say(`${copied.title} is copied and stored there.`);
}
