// nothing here
