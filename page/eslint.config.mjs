// SPDX-License-Identifier: MIT
import js from "@eslint/js";
import { defineConfig } from "eslint/config";
import globals from "globals";
import ts from "typescript-eslint";

export default defineConfig(
  { ignores: ["node_modules/", "out/"] },
  js.configs.recommended,
  {
    files: ["src/**/*.ts"],
    extends: [ts.configs.recommendedTypeChecked, ts.configs.stylisticTypeChecked],
    languageOptions: { parserOptions: { projectService: true, tsconfigRootDir: import.meta.dirname } },
    rules: {
      eqeqeq: "error",
      "no-restricted-properties": [
        "error",
        // Texts out of a file are never HTML.
        { property: "innerHTML" },
        { property: "outerHTML" },
        { property: "insertAdjacentHTML" },
      ],
    },
  },
  {
    files: ["*.mjs", "test/**/*.mjs"],
    // Tests hand functions to the browser: its names are known there, too.
    languageOptions: { globals: { ...globals.node, ...globals.browser } },
  },
);
