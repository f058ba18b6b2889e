namespace trovek {}
