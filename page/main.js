// The page: loads what it needs and joins its parts.
import { keepInAddress } from './address.js';
import { animate } from './animation.js';
import { makeControls } from './controls.js';
import { makeCopies } from './copy_buttons.js';
import { byId } from './elements.js';
import { takeFiles } from './file_drop.js';
import { notify, reason } from './notice.js';
import { loadModule, missingFeature } from './player.js';
import { makePresets } from './preset_buttons.js';
import { makeRender } from './render_panel.js';
import { Settings } from './settings.js';
import { SoundChoice } from './sound_choice.js';
import { Transport } from './transport.js';

/** @param {string} file */
async function loadJson(file) {
  const response = await fetch(file);
  if (!response.ok) throw new Error(`${file} was not loaded: status ${response.status}`);
  return response.json();
}

async function main() {
  const [attributes, presets] = await Promise.all([
    loadJson('attributes.json'),
    loadJson('presets.json'),
  ]);
  const settings = new Settings(attributes);
  const help = byId('help');
  makeControls(byId('controls'), settings, (text) => (help.textContent = text), notify);
  makePresets(settings, presets);
  makeCopies(settings);
  keepInAddress(settings);
  const choice = new SoundChoice();
  takeFiles(choice);
  const missing = missingFeature();
  if (missing) {
    notify(
      `No sound here: this browser lacks ${missing}. Settings can be made and copied all the same.`,
    );
    return;
  }
  const module = await loadModule();
  const transport = new Transport(module, settings, choice);
  animate(transport);
  makeRender(module, settings, choice);
  byId('start').disabled = false;
  // For whoever tries things in the console.
  Object.assign(window, { vesk: { settings, transport, module } });
}

main().catch((failure) => notify(`The page did not start: ${reason(failure)}.`));
