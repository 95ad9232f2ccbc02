// The settings as text, for other places: an address that is a patch, messages for a patch, a
// command, a preset file. Only what is not at its default is written.
import { BadText, readValues, wordsOf } from './attributes.js';

/** @typedef {import('./settings.js').Settings} Settings */

/** @param {Settings} settings */
const changedWords = (settings) =>
  settings.changed().map((i) => ({
    attribute: settings.attributes[i],
    words: wordsOf(settings.attributes[i], settings.values[i]),
    values: settings.values[i],
  }));

/** The part of the address after '#': feedback=0.6&delay=0.25,0.5. @param {Settings} settings */
export function linkText(settings) {
  return changedWords(settings)
    .map(({ attribute, words }) => `${attribute.name}=${words.join(',').replaceAll(' ', '+')}`)
    .join('&');
}

/**
 * Everything at its default but what the text says; what it says wrongly is left at its default and
 * reported.
 * @param {import('./attributes.js').Attribute[]} attributes
 * @param {string} text after '#'
 * @returns {{values: number[][], faults: string[]}}
 */
export function readLink(attributes, text) {
  const values = attributes.map((a) => [...a.default]);
  /** @type {string[]} */
  const faults = [];
  const seen = new Set();
  for (const [name, value] of new URLSearchParams(text)) {
    const index = attributes.findIndex((a) => a.name === name);
    try {
      if (index < 0) throw new BadText(`no attribute is named “${name}”`);
      if (seen.has(name)) throw new BadText(`${name} is set twice`);
      seen.add(name);
      values[index] = readValues(attributes[index], value.split(','));
    } catch (fault) {
      if (!(fault instanceof BadText)) throw fault;
      faults.push(fault.message);
    }
  }
  return { values, faults };
}

/** For a message box: one message after the other, choices by their index. @param {Settings} settings */
export function messagesText(settings) {
  return changedWords(settings)
    .map(({ attribute, values }) => `${attribute.name} ${values.join(' ')}`)
    .join(', ');
}

/** @param {Settings} settings */
export function commandText(settings) {
  const sets = changedWords(settings).map(({ attribute, words }) => {
    const setting = `${attribute.name}=${words.join(',')}`;
    return ` --set ${setting.includes(' ') ? `'${setting}'` : setting}`;
  });
  return `vesk render in.wav out.wav${sets.join('')}`;
}

/** @param {Settings} settings @param {string} title */
export function presetText(settings, title) {
  const lines = changedWords(settings).map(
    ({ attribute, words }) => `${attribute.name} ${words.join(' ')}`,
  );
  return [`# ${title}`, ...lines, ''].join('\n');
}
