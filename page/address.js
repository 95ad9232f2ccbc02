// Keeps the settings in the page's address, so that a link is a patch.
import { notify } from './notice.js';
import { linkText, readLink } from './patch_text.js';

/** @typedef {import('./settings.js').Settings} Settings */

/** The address follows the settings, and they follow an address that is pasted in. @param {Settings} settings */
export function keepInAddress(settings) {
  const read = () => {
    const text = location.hash.slice(1);
    if (text === linkText(settings)) return;
    const { values, faults } = readLink(settings.attributes, text);
    settings.setAll(values);
    if (faults.length > 0) notify(`Left out of the link: ${faults.join('; ')}.`);
  };
  let waiting = false;
  const write = () => {
    waiting = false;
    history.replaceState(null, '', `#${linkText(settings)}`);
  };
  read();
  addEventListener('hashchange', read);
  settings.onChange(() => {
    // Browsers refuse addresses that change all the time.
    if (!waiting) setTimeout(write, 300);
    waiting = true;
  });
}
