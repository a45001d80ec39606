// Questions to the person, one at a time.

import { element } from './fields.js';

const dialog = document.getElementById('dialog');
const title = document.getElementById('dialog-title');
const body = document.getElementById('dialog-body');
const buttons = document.getElementById('dialog-buttons');

// Shows `content` with `names` of buttons; resolves to the name that was pressed, null for Escape. The first
// button answers to Enter in a field.
export function ask(heading, content, names) {
    const before = document.activeElement;
    title.textContent = heading;
    body.replaceChildren(...content);
    dialog.returnValue = '';
    buttons.replaceChildren(...names.map((name, i) =>
        element('button', { class: i ? '' : 'primary', onclick: () => dialog.close(name) }, name)));
    body.onkeydown = event => {
        if (event.key === 'Enter' && event.target.matches('input, select')) {
            event.preventDefault();
            dialog.close(names[0]);
        }
    };
    dialog.showModal();
    (body.querySelector('input, select') ?? buttons.firstChild).focus();
    return new Promise(resolve => {
        dialog.addEventListener('close', () => {
            before?.focus?.();
            resolve(dialog.returnValue || null);
        }, { once: true });
    });
}

export async function askName(heading, name) {
    const input = element('input', { type: 'text', id: 'profile-name', dir: 'auto', autocomplete: 'off' });
    input.value = name;
    const content = [element('div', { class: 'field' }, element('label', { for: 'profile-name' }, 'Profile name'), input)];
    const pressed = ask(heading, content, ['OK', 'Cancel']);
    input.select();
    return (await pressed) === 'OK' ? input.value : null;
}

export const confirm = async (heading, text) => (await ask(heading, [element('p', {}, text)], ['OK', 'Cancel'])) === 'OK';

// Values that differ, as a table.
export function differences(changes, columns) {
    if (!changes.length) return element('p', {}, 'Nothing differs.');
    const head = element('tr', {}, ...columns.map(name => element('th', { scope: 'col' }, name)));
    const rows = changes.map(change => element('tr', {}, element('th', { scope: 'row' }, change.field),
        element('td', { dir: 'auto' }, change.before), element('td', { dir: 'auto' }, change.after)));
    return element('div', { class: 'scroll', tabindex: 0, role: 'region', 'aria-label': 'Differences' },
        element('table', {}, element('thead', {}, head), element('tbody', {}, ...rows)));
}

// A list to choose from: label, options as [value, text]. `chosen` is called at once and at each change.
export function choice(label, options, value, chosen) {
    const id = `choice-${label.toLowerCase()}`;
    const select = element('select', { id, onchange: () => chosen(select.value) });
    const offer = (list, now) => {
        select.replaceChildren(...list.map(([one, text]) => element('option', { value: one }, text)));
        if (now !== undefined) select.value = now;
    };
    offer(options, value);
    return { row: element('div', { class: 'field' }, element('label', { for: id }, label), select), select, offer };
}
