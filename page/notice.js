// One sentence to the user that stays until it is closed or another takes its place.
import { byId, element } from './elements.js';

/** @param {string} text */
export function notify(text) {
  const close = element('button', { type: 'button', 'aria-label': 'Close this message' }, '×');
  close.addEventListener('click', clearNotice);
  byId('notice').replaceChildren(element('span', {}, text), close);
}

export function clearNotice() {
  byId('notice').replaceChildren();
}

/** What went wrong, as the user reads it. @param {unknown} failure */
export const reason = (failure) =>
  failure instanceof Error || failure instanceof DOMException ? failure.message : String(failure);
