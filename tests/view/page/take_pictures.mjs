// Takes the pictures of the documentation from pages that townskin_view has written.
//
// node take_pictures.mjs CHROMIUM BLOCK.html CITY.html FOLDER
import { join } from "node:path";
import { chromium } from "playwright-core";

const [browser_program, block, city, folder] = process.argv.slice(2);
const browser = await chromium.launch({
  executablePath: browser_program,
  args: ["--headless=new", "--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader"],
});

async function open(file, viewport) {
  const page = await browser.newPage({ viewport, reducedMotion: "reduce" });
  await page.goto("file://" + file);
  await page.waitForSelector("html[data-ready=complete]");
  return page;
}

async function take(page, name) {
  await page.mouse.move(2, 2);
  await page.waitForTimeout(1500); // curves and lines follow in their own time
  await page.screenshot({ path: join(folder, name), type: "jpeg", quality: 90 });
}

const desk = { width: 1280, height: 800 };
const of_city = await open(city, desk);
await take(of_city, "page_city.jpg");
const of_block = await open(block, desk);
await of_block.fill("#find", "700");
await of_block.keyboard.press("Enter");
await take(of_block, "page_block.jpg");
await browser.close();
