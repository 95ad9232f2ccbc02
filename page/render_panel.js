// The part of the page that renders a sound to a file.
import { byId } from './elements.js';
import { renderToFile } from './file_render.js';
import { notify, reason } from './notice.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {import('./sound_choice.js').SoundChoice} SoundChoice */

/** @param {WebAssembly.Module} module @param {Settings} settings @param {SoundChoice} choice */
export function makeRender(module, settings, choice) {
  const button = byId('render');
  const cancel = byId('cancel');
  const progress = byId('render-progress');
  const link = byId('download');
  let running = new AbortController();
  /** @param {boolean} busy */
  const show = (busy) => {
    button.disabled = busy;
    cancel.hidden = !busy;
    progress.hidden = !busy;
  };
  cancel.addEventListener('click', () => running.abort());
  button.addEventListener('click', async () => {
    running = new AbortController();
    progress.value = 0;
    show(true);
    try {
      const sound = await choice.buffer();
      const name = `${choice.title
        .replace(/\.[^.]*$/, '')
        .replace(/\W+/g, '-')
        .toLowerCase()}-vesk.wav`;
      const begin = performance.now();
      const rendered = await renderToFile(
        module,
        settings,
        sound,
        (share) => (progress.value = share),
        running.signal,
      );
      const speed = rendered.seconds / ((performance.now() - begin) / 1000);
      URL.revokeObjectURL(link.href);
      link.href = URL.createObjectURL(rendered.wav);
      link.download = name;
      link.textContent = `Save ${name}`;
      link.hidden = false;
      byId('render-text').textContent =
        `${choice.title}: ${rendered.seconds.toFixed(1)} s at ${sound.sampleRate} Hz, rendered ${speed.toFixed(0)} times faster than real time.` +
        (rendered.cut ? ' It was cut after 60 s of tail and still sounds there.' : '');
    } catch (failure) {
      if (!(failure instanceof DOMException && failure.name === 'AbortError'))
        notify(`Nothing was rendered: ${reason(failure)}.`);
      else byId('render-text').textContent = 'Cancelled; nothing was rendered.';
    } finally {
      show(false);
    }
  });
  show(false);
}
