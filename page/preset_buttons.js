// A button for each preset.
import { byId, element } from './elements.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {{name: string, title: string, description: string, values: Record<string, number[]>}} Preset */

/** @param {Settings} settings @param {Preset[]} presets */
export function makePresets(settings, presets) {
  /** @param {string} title @param {string} text @param {() => void} apply */
  const button = (title, text, apply) => {
    const made = element('button', { type: 'button', title: text }, title);
    made.addEventListener('click', () => {
      apply();
      byId('preset-text').textContent = text;
    });
    byId('presets').append(made);
  };
  button('Default', 'All settings at their default.', () => settings.setDefaults());
  for (const { title, description, values } of presets)
    button(title, `${title}: ${description}.`, () =>
      settings.setAll(settings.attributes.map((a) => values[a.name])),
    );
  settings.onChange(() => (byId('preset-text').textContent = 'Settings of your own.'));
}
