// The control of each attribute, in panels of its category.
import { domainText, textOf } from './attributes.js';
import { element } from './elements.js';
import { Knob } from './knob.js';

/** @typedef {import('./attributes.js').Attribute} Attribute */
/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {{element: HTMLElement, show: (values: number[]) => void}} Control */
/** @typedef {(values: number[]) => void} Setter */

/** @param {Attribute} attribute @param {Setter} set @returns {Control} */
function toggle(attribute, set) {
  const button = element(
    'button',
    { type: 'button', role: 'switch', class: 'switch', 'aria-label': attribute.label },
    element('span', { class: 'track' }),
  );
  button.addEventListener('click', () =>
    set([button.getAttribute('aria-checked') === 'true' ? 0 : 1]),
  );
  return {
    element: button,
    show: ([on]) => button.setAttribute('aria-checked', on ? 'true' : 'false'),
  };
}

/** @param {Attribute} attribute @param {Setter} set @returns {Control} */
function choice(attribute, set) {
  const select = element(
    'select',
    { 'aria-label': attribute.label },
    ...attribute.choices.map((name, i) => element('option', { value: String(i) }, name)),
  );
  select.addEventListener('change', () => set([Number(select.value)]));
  return { element: select, show: ([index]) => (select.value = String(index)) };
}

/** @param {Attribute} attribute @param {Setter} set @param {(fault: string) => void} onFault @returns {Control} */
function number(attribute, set, onFault) {
  const knob = new Knob(attribute, attribute.label, (value) => set([value]), onFault);
  return { element: knob.element, show: ([value]) => knob.show(value) };
}

/** Left and right, together while they are linked. @param {Attribute} attribute @param {Setter} set @param {(fault: string) => void} onFault @returns {Control} */
function pair(attribute, set, onFault) {
  const link = element('input', { type: 'checkbox' });
  let linked = true;
  link.checked = linked;
  link.addEventListener('change', () => {
    linked = link.checked;
    if (linked) set([knobs[0].value, knobs[0].value]);
  });
  /** @param {number} side @param {number} value */
  const turn = (side, value) => {
    const values = linked ? [value, value] : knobs.map((knob) => knob.value);
    values[side] = value;
    set(values);
  };
  const knobs = ['left', 'right'].map(
    (name, side) =>
      new Knob(attribute, `${attribute.label}, ${name}`, (value) => turn(side, value), onFault),
  );
  return {
    element: element(
      'div',
      { class: 'pair' },
      ...knobs.map((knob) => knob.element),
      element('label', { class: 'link' }, link, 'both sides together'),
    ),
    show: (values) => {
      knobs.forEach((knob, side) => knob.show(values[side]));
      if (values[0] !== values[1]) link.checked = linked = false;
    },
  };
}

const longestNarrowName = 9; // of a choice, in one column of a narrow screen

const makers = { toggle, choice, number, list: pair };

/**
 * Fills the place with panels that show and set the settings.
 * @param {HTMLElement} place
 * @param {Settings} settings
 * @param {(text: string) => void} onHelp of the control under the pointer or with the focus; empty: none
 * @param {(fault: string) => void} onFault
 */
export function makeControls(place, settings, onHelp, onFault) {
  /** @type {Map<string, HTMLElement>} */
  const panels = new Map();
  const controls = settings.attributes.map((attribute, index) => {
    const control = makers[attribute.kind](
      attribute,
      (values) => settings.set(index, values),
      onFault,
    );
    control.show(settings.values[index]);
    const help = element(
      'span',
      { id: `help-${attribute.name}`, hidden: '' },
      attribute.description,
    );
    for (const part of [control.element, ...control.element.querySelectorAll('[role=slider]')])
      part.setAttribute('aria-describedby', help.id);
    const isWide = attribute.choices.some((name) => name.length > longestNarrowName);
    const block = element(
      'div',
      {
        class: `control ${attribute.kind} ${isWide ? 'wide' : ''}`,
        'data-attribute': attribute.name,
      },
      element('span', { class: 'label', 'aria-hidden': 'true' }, attribute.label),
      control.element,
      help,
    );
    const standard = textOf(attribute, attribute.default[0]);
    const text = `${attribute.name}: ${attribute.description.replace(/([^.])$/, '$1.')} ${domainText(attribute)}; default ${standard}.`;
    for (const event of ['pointerenter', 'focusin'])
      block.addEventListener(event, () => onHelp(text));
    for (const event of ['pointerleave', 'focusout'])
      block.addEventListener(event, () => onHelp(''));
    panelOf(attribute.category).append(block);
    return control;
  });
  settings.onChange((index) => controls[index].show(settings.values[index]));

  /** @param {string} category */
  function panelOf(category) {
    let panel = panels.get(category);
    if (!panel) {
      const title = category || 'Delay';
      panel = element('div', { class: 'knobs' });
      panels.set(category, panel);
      const id = `panel-${title.toLowerCase()}`;
      place.append(
        element(
          'section',
          { class: 'panel', 'aria-labelledby': id, 'data-category': category },
          element('h2', { id }, title),
          panel,
        ),
      );
    }
    return panel;
  }
}
