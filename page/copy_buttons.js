// Buttons that copy the settings as text for other places.
import { byId } from './elements.js';
import { commandText, linkText, messagesText, presetText } from './patch_text.js';

/** @typedef {import('./settings.js').Settings} Settings */

/** @param {Settings} settings */
export function makeCopies(settings) {
  const texts = {
    'copy-link': () => `${location.href.split('#')[0]}#${linkText(settings)}`,
    'copy-messages': () => messagesText(settings),
    'copy-command': () => commandText(settings),
    'copy-preset': () => presetText(settings, 'Untitled: settings from the page'),
  };
  for (const [id, text] of Object.entries(texts))
    byId(id).addEventListener('click', async () => {
      const shown = byId('copied');
      shown.hidden = false;
      shown.value = text();
      if (shown.value === '') shown.value = '(everything is at its default: no message is needed)';
      try {
        await navigator.clipboard.writeText(shown.value);
        byId('share-status').textContent = 'Copied.';
      } catch {
        shown.select(); // it can be copied by hand
        byId('share-status').textContent = 'Selected below; the browser did not let it be copied.';
      }
    });
}
