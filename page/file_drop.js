// Files that are chosen, or dropped anywhere on the page.
import { byId } from './elements.js';
import { notify, reason } from './notice.js';

/** @typedef {import('./sound_choice.js').SoundChoice} SoundChoice */

/** @param {SoundChoice} choice */
export function takeFiles(choice) {
  /** @param {FileList | null | undefined} files */
  const open = async (files) => {
    if (!files || files.length === 0) return;
    if (files.length > 1) notify(`Only the first of ${files.length} files was opened.`);
    try {
      await choice.open(files[0]);
    } catch (failure) {
      notify(reason(failure));
    }
  };
  byId('file').addEventListener('change', () => open(byId('file').files));
  addEventListener('dragover', (event) => {
    event.preventDefault();
    document.body.classList.add('dropping');
  });
  addEventListener('dragleave', () => document.body.classList.remove('dropping'));
  addEventListener('drop', (event) => {
    event.preventDefault();
    document.body.classList.remove('dropping');
    open(event.dataTransfer?.files);
  });
}
